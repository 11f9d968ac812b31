// The setup screen's rules without a window: the strength score and level, what counts as a
// character, when the button may be pressed, the wording by disguise, and creating through a
// recording tool.

#include "lockscreens/SetupForm.h"
#include "support/RecordingRunner.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

// A form over a vault whose tool records, and like the real tool "create" leaves the image
// folder behind.
struct Setup {
    QTemporaryDir support;
    RecordingRunner tool;
    VaultManager vault{support.path(), [this](const QStringList& args, const std::optional<QString>& in,
                                              const HDIUtilOutputLine& onLine) {
                           if (args.first() == "create")
                               QDir().mkpath(args.last());
                           return tool.runner()(args, in, onLine);
                       }};
    SetupForm form;
    explicit Setup(const QString& password) {
        form.setVault(&vault);
        form.setPassword(password);
        form.setConfirm(password);
    }
};

} // namespace

class TestSetupForm : public QObject {
    Q_OBJECT

private slots:
    void scoreAndLevel_data() {
        QTest::addColumn<QString>("password");
        QTest::addColumn<int>("score");
        QTest::addColumn<int>("level");
        QTest::newRow("empty") << "" << 0 << 0;
        QTest::newRow("20 rounds up to level 1") << "a1" << 20 << 1;
        QTest::newRow("eight lowercase") << "abcdefgh" << 30 << 1;
        QTest::newRow("eight spaces are symbols") << "        " << 35 << 1;
        QTest::newRow("upper, lower, digit") << "Abcdefg1" << 50 << 2;
        QTest::newRow("eleven, all kinds") << "Abcdefghi1!" << 65 << 3;
        QTest::newRow("twelve, all kinds") << "Abcdefghij1!" << 85 << 3;
        QTest::newRow("fifteen, all kinds") << "Abcdefghijklm1!" << 85 << 3;
        QTest::newRow("sixteen, all kinds") << "Abcdefghijk1!xyz" << 100 << 4;
        QTest::newRow("other scripts' digits count") << "abcdefg\u0663" << 40 << 2;
        QTest::newRow("an accent joins its letter") << "abcdefge\u0301" << 30 << 1;
    }
    void scoreAndLevel() {
        QFETCH(QString, password);
        QFETCH(int, score);
        QFETCH(int, level);
        QCOMPARE(SetupForm::passwordScore(password), score);
        SetupForm form;
        form.setPassword(password);
        QCOMPARE(form.level(), level);
    }

    void levelRoundsToTheNearestQuarter() {
        const QList<std::pair<int, int>> edges = {{0, 0},  {12, 0}, {13, 1}, {37, 1}, {38, 2},
                                                  {62, 2}, {63, 3}, {87, 3}, {88, 4}, {100, 4}};
        for (const auto& [score, level] : edges)
            QVERIFY2(SetupForm::strengthLevel(score) == level, qPrintable(QString::number(score)));
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
        QVERIFY(form.mismatch());
        QVERIFY(!form.canSubmit());
        form.setConfirm("abcdefgh");
        QVERIFY(!form.mismatch());
        QVERIFY(form.canSubmit());
        QVERIFY(changes.count() >= 3);
    }

    // A disguised face must not give the vault away.
    void disguisedWordingNeverMentionsAVault() {
        for (const auto& [disguise, disguised] : QList<std::pair<QString, bool>>{
                 {"none", false}, {"stealthy", false}, {"neutral", true}, {"math", true}}) {
            SetupForm form;
            form.setDisguiseRaw(disguise);
            QCOMPARE(form.disguised(), disguised);
            const QString texts = QStringList{form.title(), form.subtitle(), form.passwordPlaceholder(),
                                              form.notice(), form.buttonLabel()}
                                      .join('\n');
            QVERIFY2(texts.contains("vault", Qt::CaseInsensitive) != disguised, qPrintable(disguise));
        }
    }

    void validationFailuresNeverReachTheTool() {
        for (const auto& [password, confirm] : QList<std::pair<QString, QString>>{
                 {"abcdefg", "abcdefg"}, {"abcdefgh", "abcdefgi"}, {"abcdefgh\n", "abcdefgh\n"}}) {
            Setup s(password);
            s.form.setConfirm(confirm);
            s.form.create();
            QVERIFY2(!s.form.error().isEmpty(), qPrintable(password));
            QVERIFY(!s.form.busy());
            QCoreApplication::processEvents();
            QVERIFY(s.tool.calls.isEmpty());
        }
    }

    void createsThenUnlocksWithTheSamePassword() {
        Setup s(" pass word ");
        s.tool.replies = {{0, {}, {}}, RecordingRunner::attached("/mnt/v")};
        s.form.create();
        // Busy at once; the tool runs on the engine's worker.
        QVERIFY(s.form.busy());
        // Published back on this thread once both runs are over.
        QTRY_VERIFY(s.vault.isUnlocked());
        QCOMPARE(s.tool.calls.size(), 2);
        QCOMPARE(s.tool.calls[0].args.first(), "create");
        QCOMPARE(s.tool.calls[1].args.first(), "attach");
        QCOMPARE(s.tool.calls[0].stdinText, " pass word ");
        QCOMPARE(s.tool.calls[1].stdinText, " pass word ");
        QVERIFY(s.form.busy());
        QCOMPARE(s.form.error(), QString());
    }

    // A failed creation, or a vault that will not open after it: the engine's reason is
    // shown and the passwords stay for another try.
    void failuresAreShownAndThePasswordsKept() {
        const QString noSpace = "morvanta-hdiutil: create failed - No space left on device.";
        for (const bool created : {false, true}) {
            Setup s("abcdefgh");
            s.tool.replies = {created ? HDIUtilResult{0, {}, {}} : HDIUtilResult{1, {}, noSpace},
                              {1, {}, "morvanta-hdiutil: attach failed - no FUSE."}};
            s.form.create();
            QTRY_VERIFY(!s.form.busy());
            QVERIFY(!s.form.error().isEmpty());
            QCOMPARE(s.form.error().contains(noSpace), !created);
            QVERIFY(!created || s.vault.vaultExists());
            QVERIFY(!s.vault.isUnlocked());
            QCOMPARE(s.form.password(), "abcdefgh");
            QCOMPARE(s.form.confirm(), "abcdefgh");
            QCOMPARE(s.tool.calls.size(), created ? 2 : 1);
        }
    }
};

QTEST_MAIN(TestSetupForm)
#include "tst_setupform.moc"
