// The quiz's rules without a window: parsing answers, the questions it draws,
// and what a submission does: the text as typed goes to the tool first, the grade after.

#include "lockscreens/MathQuiz.h"
#include "support/RecordingRunner.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <map>

namespace {

// A quiz over a vault that exists and refuses every password.
struct LockedQuiz {
    QTemporaryDir support;
    RecordingRunner tool;
    VaultManager vault{support.path(), tool.runner()};
    MathQuiz quiz;
    LockedQuiz() {
        QDir().mkpath(vault.bundlePath());
        const HDIUtilResult wrong{1, {}, "morvanta-hdiutil: attach failed - Password incorrect."};
        tool.replies = {wrong, wrong};
        quiz.setVault(&vault);
    }
};

} // namespace

class TestMathQuiz : public QObject {
    Q_OBJECT

private slots:
    void parsingAnswers() {
        const std::optional<qint64> none;
        for (const auto& [text, number] : QList<std::pair<QString, std::optional<qint64>>>{
                 {"+42", 42}, {"-7", -7}, {"9223372036854775807", std::numeric_limits<qint64>::max()},
                 {"-9223372036854775808", std::numeric_limits<qint64>::min()},
                 {"9223372036854775808", none}, {"4 2", none}, {"42.0", none}, {"-", none}, {"+-4", none},
                 {"\u0664\u0662", none}, // other scripts' digits
                 {" 42", none}})          // trimming is the caller's
            QVERIFY2(MathQuiz::parseAnswer(text) == number, qPrintable(text));
    }

    void questionsAndAnswers() {
        MathQuiz quiz;
        quiz.setQuestion(MathQuiz::Op::sub, 47, 12);
        QCOMPARE(quiz.question(), "47 \u2212 12 = ?");
        QCOMPARE(quiz.expectedAnswer(), 35);
        quiz.setQuestion(MathQuiz::Op::mul, 12, 11);
        QCOMPARE(quiz.expectedAnswer(), 132);
        // A new question leaves what is typed alone.
        quiz.setInput("12");
        quiz.regenerate();
        QCOMPARE(quiz.input(), "12");
        QVERIFY(!quiz.hasMessage());
    }

    // Every operand anywhere in its range, ends included, and nothing outside it. A
    // difference puts the larger first, so there both operands share one range.
    void drawnQuestionsCoverTheirRanges() {
        MathQuiz quiz;
        using Span = std::pair<qint64, qint64>; // the lowest and highest seen
        std::map<std::pair<MathQuiz::Op, int>, Span> spans;
        for (int i = 0; i < 10000; ++i) {
            quiz.regenerate();
            const bool sub = quiz.op() == MathQuiz::Op::sub;
            QVERIFY(!sub || quiz.a() >= quiz.b());
            for (const auto& [operand, value] : {std::pair(0, quiz.a()), std::pair(sub ? 0 : 1, quiz.b())}) {
                auto& [low, high] = spans.try_emplace({quiz.op(), operand}, value, value).first->second;
                std::tie(low, high) = Span(std::min(low, value), std::max(high, value));
            }
        }
        for (const MathQuiz::Op op : {MathQuiz::Op::add, MathQuiz::Op::mul})
            for (const int operand : {0, 1})
                QCOMPARE(spans[std::pair(op, operand)], op == MathQuiz::Op::mul ? Span(3, 12) : Span(10, 99));
        QCOMPARE(spans[std::pair(MathQuiz::Op::sub, 0)], Span(10, 99));
    }

    void gradingAfterAFailedUnlock_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("correct");
        QTest::newRow("right") << "42" << true;
        QTest::newRow("right, with spaces and tabs around") << " \t\u00A042\u2003" << true;
        QTest::newRow("right, then a line feed") << "42\n" << false;
        QTest::newRow("wrong number") << "41" << false;
        QTest::newRow("not a number") << "4 2" << false;
        QTest::newRow("empty") << "" << false;
    }
    void gradingAfterAFailedUnlock() {
        QFETCH(QString, typed);
        QFETCH(bool, correct);
        LockedQuiz q;
        q.quiz.setQuestion(MathQuiz::Op::add, 20, 22);
        q.quiz.setInput(typed);
        q.quiz.submit();
        QVERIFY(q.quiz.busy());
        QTRY_VERIFY(!q.quiz.busy());

        // The password tried is the text exactly as typed, unless the tool could not take it.
        const QList<RecordingRunner::Call> tried{
            {{"attach", "-stdinpass", "-plist", "-nobrowse", q.vault.bundlePath()}, typed}};
        QCOMPARE(q.tool.calls, unusablePasswordReason(typed) ? QList<RecordingRunner::Call>() : tried);
        QVERIFY(q.quiz.hasMessage());
        QCOMPARE(q.quiz.correct(), correct);
        QCOMPARE(q.quiz.input(), QString());
    }

    // While checking: a second submit is ignored, and the last grade is cleared at once.
    void whileChecking() {
        LockedQuiz q;
        q.quiz.regenerate();
        q.quiz.setInput("1");
        q.quiz.submit();
        q.quiz.submit();
        QTRY_VERIFY(q.quiz.hasMessage());
        QTest::qWait(50);
        QCOMPARE(q.tool.calls.size(), 1);
        q.quiz.setInput("2");
        q.quiz.submit();
        QVERIFY(!q.quiz.hasMessage());
        QTRY_VERIFY(q.quiz.hasMessage());
        QCOMPARE(q.tool.calls.size(), 2);
    }
};

QTEST_MAIN(TestMathQuiz)
#include "tst_mathquiz.moc"
