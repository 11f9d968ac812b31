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
    // The score, and the level it gives: the nearest quarter.
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
        for (const auto& [score, level] : QList<std::pair<int, int>>{
                 {0, 0}, {12, 0}, {13, 1}, {37, 1}, {38, 2}, {62, 2}, {63, 3}, {87, 3}, {88, 4}, {100, 4}})
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
        QVERIFY(form.mismatch() && !form.canSubmit());
        form.setConfirm("abcdefgh");
        QVERIFY(!form.mismatch() && form.canSubmit());
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

    // Refusals never reach the tool. A failed creation, or a vault that will not open after
    // it, shows the engine's reason and keeps the passwords for another try; a good one opens
    // the vault with the same password, as typed, and stays busy as the screen goes.
    void creating() {
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
};

QTEST_MAIN(TestSetupForm)
#include "tst_setupform.moc"
