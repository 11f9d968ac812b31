// The rules of the lock and first-run screens, without a window: the disguise setting as
// the screens read it, the password lock screen, the setup form's strength and creating, the
// quiz's answers, questions and grading, the welcome pages, and the symbols every screen draws.

#include "lockscreens/MathQuiz.h"
#include "lockscreens/SetupForm.h"
#include "lockscreens/SymbolIcon.h"
#include "lockscreens/UnlockForm.h"
#include "lockscreens/WelcomePager.h"
#include "support/RecordingRunner.h"

#include <QDir>
#include <QDirIterator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <map>

namespace {

// An engine over a tool that records, and like the real tool "create" leaves the image
// folder behind.
struct RecordedVault {
    QTemporaryDir support;
    RecordingRunner tool;
    VaultManager vault{support.path(), [this](const QStringList& args, const std::optional<QString>& in,
                                              const HDIUtilOutputLine& onLine) {
                           if (args.first() == "create")
                               QDir().mkpath(args.last());
                           return tool.runner()(args, in, onLine);
                       }};
};

// A quiz over a vault that exists and refuses every password.
struct LockedQuiz : RecordedVault {
    MathQuiz quiz;
    LockedQuiz() {
        QDir().mkpath(vault.bundlePath());
        const HDIUtilResult wrong{1, {}, "morvanta-hdiutil: attach failed - Password incorrect."};
        tool.replies = {wrong, wrong};
        quiz.setVault(&vault);
    }
};

// A setup form over a recorded vault, both fields filled with `password`.
struct Setup : RecordedVault {
    SetupForm form;
    explicit Setup(const QString& password) {
        form.setVault(&vault);
        form.setPassword(password);
        form.setConfirm(password);
    }
};

} // namespace

class TestLockScreens : public QObject {
    Q_OBJECT

private slots:
    // The password goes to the tool as typed, once however often pressed, and a failure clears
    // it. (What the tool cannot take never reaches it: the engine's rule. What each face says
    // is judged on the window, as the desktop sees it.)
    void unlocking() {
        RecordedVault v;
        UnlockForm form;
        QSignalSpy relabelled(&form, &UnlockForm::buttonLabelChanged);
        form.setVault(&v.vault);
        form.setStealth(true);
        QCOMPARE(relabelled.count(), 1);
        QVERIFY(QDir().mkpath(v.vault.bundlePath()));
        v.tool.replies = {{1, {}, "morvanta-hdiutil: attach failed - Password incorrect."}};
        const QString idleLabel = form.buttonLabel();
        form.setPassword("  spaced out  ");
        form.unlock();
        QVERIFY(form.busy() && form.buttonLabel() != idleLabel);
        form.unlock();
        QTRY_VERIFY(!form.busy());
        QVERIFY(!form.error().isEmpty());
        QCOMPARE(form.password(), QString());
        QCOMPARE(form.buttonLabel(), idleLabel);
        QCOMPARE(v.tool.calls.size(), 1);
        QCOMPARE(v.tool.calls[0].stdinText, "  spaced out  ");
    }

    // The pages go back and forth and offer to continue on the last; no text may say
    // something false about the platform it runs on.
    void welcomePages() {
        WelcomePager pager;
        pager.setCtaLabel("Get Started");
        QSignalSpy continued(&pager, &WelcomePager::continued);
        pager.back();
        QVERIFY(!pager.canGoBack());
        QCOMPARE(pager.page(), 0);
        const QString next = pager.forwardLabel();
        for (int press = 0; press < 4; ++press)
            pager.advance();
        QCOMPARE(pager.page(), 2);
        QCOMPARE(pager.forwardLabel(), "Get Started");
        QCOMPARE(continued.count(), 2);
        pager.back();
        QCOMPARE(pager.page(), 1);
        QCOMPARE(pager.forwardLabel(), next);

        QStringList texts{WelcomePager::introSubtitle(), WelcomePager::backupText()};
        for (const QVariant& card : WelcomePager::featureCards())
            texts << card.toMap().value("title").toString() << card.toMap().value("text").toString();
        QVERIFY(texts.first().endsWith("for Linux"));
        for (const char* word : {"Mac", "Finder", "Spotlight", "Apple", "SwiftUI", "\u2318", ".dmg"})
            QVERIFY2(!texts.join('\n').contains(QString::fromUtf8(word)), word);
    }

    // Every symbol name used in the screens' QML must have an icon, drawn in the colour asked.
    void everySymbolTheScreensNameIsDrawn() {
        QSet<QString> named{"checkmark.circle.fill", "xmark.circle.fill"};
        const QRegularExpression symbolName(R"re((?:symbol|name|icon):\s*"([A-Za-z.]+)")re");
        for (QDirIterator it(":/qt/qml/Morvanta", {"*.qml"}, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
            QFile file(it.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            for (const QRegularExpressionMatch& m : symbolName.globalMatch(QString::fromUtf8(file.readAll())))
                named.insert(m.captured(1));
        }
        for (const QVariant& card : WelcomePager::featureCards())
            named.insert(card.toMap().value("icon").toString());
        QVERIFY(named.size() > 12);

        const QColor green(0, 200, 0);
        for (const QString& name : named) {
            const QImage image = SymbolIcon::render(name, green, {48, 48}).convertToFormat(QImage::Format_ARGB32);
            const auto* pixels = reinterpret_cast<const QRgb*>(image.constBits());
            // The app's own icon keeps its colours.
            QVERIFY2(std::any_of(pixels, pixels + 48 * 48,
                                 [&](QRgb p) { return name == "AppIcon" ? qAlpha(p) == 255 : p == green.rgba(); }),
                     qPrintable(name));
        }
        QVERIFY(SymbolIcon::render("no.such.symbol", Qt::red, {32, 32}).isNull());
    }

    // The score, and the level it gives: the nearest quarter (35 and 40 fall either side of
    // a half).
    void scoreAndLevel() {
        for (const auto& [password, score, level] : QList<std::tuple<QString, int, int>>{
                 {"", 0, 0}, {"a1", 20, 1}, {"abcdefgh", 30, 1}, {"Abcdefg1", 50, 2},
                 {"        ", 35, 1}, // spaces are symbols
                 {"Abcdefghi1!", 65, 3}, {"Abcdefghij1!", 85, 3}, {"Abcdefghijklm1!", 85, 3},
                 {"Abcdefghijk1!xyz", 100, 4},
                 {"abcdefg\u0663", 40, 2},     // other scripts' digits count
                 {"abcdefge\u0301", 30, 1}}) { // an accent joins its letter
            SetupForm form;
            form.setPassword(password);
            QCOMPARE(SetupForm::passwordScore(password), score);
            QCOMPARE(form.level(), level);
        }
    }

    // Characters as a person sees them; eight are needed, and a match.
    void canSubmitNeedsEightCharactersAndAMatch() {
        for (const QString& one : QStringList{"e\u0301", "\U0001F600", "\U0001F1E9\U0001F1EA",
                                   "\U0001F468\u200D\U0001F469\u200D\U0001F467"})
            QVERIFY2(SetupForm::characterCount(one) == 1, qPrintable(one));
        SetupForm form;
        QSignalSpy changes(&form, &SetupForm::canSubmitChanged);
        // Seven people-characters written with eight code units: still too short.
        form.setPassword("abcdef\U0001F600");
        form.setConfirm("abcdef\U0001F600");
        QVERIFY(!form.canSubmit());
        form.setPassword("abcdefgh");
        QVERIFY(form.mismatch() && !form.canSubmit());
        form.setConfirm("abcdefgh");
        QVERIFY(!form.mismatch() && form.canSubmit());
        QVERIFY(changes.count() >= 3);
    }

    // A disguised face must not give the vault away; a setting it does not know, however
    // close, is no disguise.
    void disguisedWordingNeverMentionsAVault() {
        for (const auto& [disguise, disguised] : QList<std::pair<QString, bool>>{
                 {"none", false}, {"Math", false}, {"neutral", true}, {"math", true}}) {
            SetupForm form;
            form.setDisguiseRaw(disguise);
            QCOMPARE(form.disguised(), disguised);
            const QString texts = QStringList{form.title(), form.subtitle(), form.passwordPlaceholder(),
                                              form.notice(), form.buttonLabel()}
                                      .join('\n');
            QVERIFY2(texts.contains("vault", Qt::CaseInsensitive) != disguised, qPrintable(disguise));
        }
    }

    // Too short or unconfirmed never reaches the tool. A failed creation, or a vault that will
    // not open after it, shows the engine's reason and keeps the passwords for another try; a
    // good one opens the vault with the same password, as typed, and stays busy as the screen
    // goes.
    void creating() {
        for (const auto& [password, confirm] : QList<std::pair<QString, QString>>{
                 {"abcdefg", "abcdefg"}, {"abcdefgh", "abcdefgi"}}) {
            Setup s(password);
            s.form.setConfirm(confirm);
            s.form.create();
            QVERIFY2(!s.form.error().isEmpty(), qPrintable(password));
            QVERIFY(!s.form.busy());
            QCoreApplication::processEvents();
            QVERIFY(s.tool.calls.isEmpty());
        }
        const QString noSpace = "morvanta-hdiutil: create failed - No space left on device.";
        const HDIUtilResult done{0, {}, {}};
        for (const auto& [created, opened] : QList<std::pair<HDIUtilResult, HDIUtilResult>>{
                 {{1, {}, noSpace}, done},
                 {done, {1, {}, "morvanta-hdiutil: attach failed - no FUSE."}},
                 {done, RecordingRunner::attached("/mnt/v")}}) {
            Setup s(" pass word ");
            s.tool.replies = {created, opened};
            s.form.create();
            // Busy at once; the tool runs on the engine's worker.
            QVERIFY(s.form.busy());
            const bool works = created.status == 0 && opened.status == 0;
            QTRY_VERIFY(works ? s.vault.isUnlocked() : !s.form.busy());
            QCOMPARE(s.form.busy(), works);
            QCOMPARE(s.form.error().isEmpty(), works);
            QCOMPARE(s.form.error().contains(noSpace), created.status != 0);
            QVERIFY(created.status != 0 || s.vault.vaultExists());
            QCOMPARE(s.form.password(), " pass word ");
            QCOMPARE(s.form.confirm(), " pass word ");
            QCOMPARE(s.tool.calls.size(), created.status == 0 ? 2 : 1);
            for (const RecordingRunner::Call& call : s.tool.calls)
                QCOMPARE(call.stdinText, " pass word ");
        }
    }

    // Each kind of question expects its own answer. Every operand anywhere in its range, ends
    // included, and nothing outside it; a difference puts the larger first, so there both
    // operands share one range.
    void drawnQuestionsCoverTheirRanges() {
        MathQuiz quiz;
        quiz.setQuestion(MathQuiz::Op::sub, 47, 12);
        QCOMPARE(quiz.expectedAnswer(), 35);
        quiz.setQuestion(MathQuiz::Op::mul, 12, 11);
        QCOMPARE(quiz.expectedAnswer(), 132);
        // A new question leaves what is typed alone.
        quiz.setInput("12");
        using Span = std::pair<qint64, qint64>; // the lowest and highest seen
        std::map<std::pair<MathQuiz::Op, int>, Span> spans;
        for (int i = 0; i < 10000; ++i) {
            quiz.regenerate();
            QCOMPARE(quiz.input(), "12");
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

    // The answer is read from what is typed: trimmed, whole, in ASCII digits, and never wrapped
    // round into the right one.
    void gradingAfterAFailedUnlock_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("correct");
        QTest::newRow("right") << "42" << true;
        QTest::newRow("right, with spaces and tabs around") << " \t\u00A042\u2003" << true;
        QTest::newRow("right, signed") << "+42" << true;
        QTest::newRow("right, then a line feed") << "42\n" << false;
        QTest::newRow("right plus 2^64") << "18446744073709551658" << false;
        QTest::newRow("right, in another script's digits") << "\u0664\u0662" << false;
        QTest::newRow("right, as a fraction") << "42.0" << false;
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
        QCOMPARE(q.tool.calls.size(), unusablePasswordReason(typed) ? 0 : 1);
        QCOMPARE(q.tool.calls.value(0, {{}, typed}).stdinText, typed);
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

QTEST_MAIN(TestLockScreens)
#include "tst_lockscreens.moc"
