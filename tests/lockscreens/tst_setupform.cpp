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

// Records like the tool's stand-in, and like the real tool "create" leaves the image folder
// behind.
HDIUtilRunner creatingRunner(RecordingRunner& tool) {
    return [recording = tool.runner()](const QStringList& args, const std::optional<QString>& input,
                                       const HDIUtilOutputLine& onLine) {
        if (args.first() == "create")
            QDir().mkpath(args.last());
        return recording(args, input, onLine);
    };
}

} // namespace

class TestSetupForm : public QObject {
    Q_OBJECT

private slots:
    void scoreAndLevel_data() {
        QTest::addColumn<QString>("password");
        QTest::addColumn<int>("score");
        QTest::addColumn<int>("level");
        QTest::addColumn<QString>("caption");
        QTest::newRow("empty") << "" << 0 << 0 << "At least 8 characters.";
        QTest::newRow("one lowercase letter: level 0 reads weak")
            << "a" << 10 << 0 << "Weak password.";
        QTest::newRow("20 rounds up to level 1") << "a1" << 20 << 1 << "Weak password.";
        QTest::newRow("eight lowercase") << "abcdefgh" << 30 << 1 << "Weak password.";
        QTest::newRow("eight spaces are symbols") << "        " << 35 << 1 << "Weak password.";
        QTest::newRow("upper, lower, digit") << "Abcdefg1" << 50 << 2 << "Fair password.";
        QTest::newRow("and a symbol") << "Abcdefg1!" << 65 << 3 << "Strong password.";
        QTest::newRow("eleven, all kinds") << "Abcdefghi1!" << 65 << 3 << "Strong password.";
        QTest::newRow("twelve, all kinds") << "Abcdefghij1!" << 85 << 3 << "Strong password.";
        QTest::newRow("fifteen, all kinds") << "Abcdefghijklm1!" << 85 << 3 << "Strong password.";
        QTest::newRow("sixteen, all kinds") << "Abcdefghijk1!xyz" << 100 << 4 << "Very strong.";
        QTest::newRow("other scripts' digits count")
            << "abcdefg\u0663" << 40 << 2 << "Fair password.";
        QTest::newRow("an accent joins its letter")
            << "abcdefge\u0301" << 30 << 1 << "Weak password.";
    }
    void scoreAndLevel() {
        QFETCH(QString, password);
        QFETCH(int, score);
        QFETCH(int, level);
        QFETCH(QString, caption);
        QCOMPARE(SetupForm::passwordScore(password), score);
        SetupForm form;
        form.setPassword(password);
        QCOMPARE(form.level(), level);
        QCOMPARE(form.caption(), caption);
    }

    void levelRoundsToTheNearestQuarter() {
        const QList<std::pair<int, int>> edges = {{0, 0},  {12, 0}, {13, 1}, {37, 1}, {38, 2},
                                                  {62, 2}, {63, 3}, {87, 3}, {88, 4}, {100, 4}};
        for (const auto& [score, level] : edges)
            QVERIFY2(SetupForm::strengthLevel(score) == level, qPrintable(QString::number(score)));
    }

    void captionColourFollowsTheLevelAndTheAccent() {
        SetupForm form;
        const QColor red = QColor::fromRgbF(1.0f, 0.45f, 0.45f);
        QCOMPARE(form.captionColor(), red);
        form.setPassword("abcdefgh");
        QCOMPARE(form.captionColor(), red);
        form.setPassword("Abcdefg1");
        QCOMPARE(form.captionColor(), QColor::fromRgbF(0.98f, 0.75f, 0.35f));
        form.setPassword("Abcdefg1!");
        QCOMPARE(form.captionColor(), QColor::fromRgbF(0.98f, 0.85f, 0.55f));
        form.setDisguiseRaw("math");
        QCOMPARE(form.captionColor(), QColor::fromRgbF(1, 1, 1, 0.85f));
        form.setPassword("Abcdefghijk1!xyz");
        QCOMPARE(form.captionColor(), QColor::fromRgbF(0.55f, 0.95f, 0.70f));
    }

    void characterCountIsWhatAPersonSees_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("count");
        QTest::newRow("ascii") << "abcdefg" << 7;
        QTest::newRow("e and a combining accent") << "e\u0301" << 1;
        QTest::newRow("emoji outside the basic plane") << "\U0001F600" << 1;
        QTest::newRow("family emoji joined by ZWJ")
            << "\U0001F468\u200D\U0001F469\u200D\U0001F467" << 1;
        QTest::newRow("flag from two regional indicators") << "\U0001F1E9\U0001F1EA" << 1;
    }
    void characterCountIsWhatAPersonSees() {
        QFETCH(QString, text);
        QFETCH(int, count);
        QCOMPARE(SetupForm::characterCount(text), count);
    }

    void canSubmitNeedsEightCharactersAndAMatch() {
        SetupForm form;
        QSignalSpy changes(&form, &SetupForm::canSubmitChanged);
        form.setPassword("abcdefg");
        form.setConfirm("abcdefg");
        QVERIFY(!form.canSubmit());
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
        QVERIFY(changes.count() >= 4);
    }

    // A disguised face must not give the vault away.
    void disguisedWordingNeverMentionsAVault_data() {
        QTest::addColumn<QString>("disguise");
        QTest::addColumn<bool>("disguised");
        QTest::newRow("none") << "none" << false;
        QTest::newRow("unknown text") << "stealthy" << false;
        QTest::newRow("empty text") << "" << false;
        QTest::newRow("neutral") << "neutral" << true;
        QTest::newRow("math") << "math" << true;
    }
    void disguisedWordingNeverMentionsAVault() {
        QFETCH(QString, disguise);
        QFETCH(bool, disguised);
        SetupForm form;
        form.setDisguiseRaw(disguise);
        QCOMPARE(form.disguised(), disguised);
        const QString texts = QStringList{form.title(), form.subtitle(), form.passwordPlaceholder(),
                                          form.notice(), form.buttonLabel()}
                                  .join('\n');
        QCOMPARE(texts.contains("vault", Qt::CaseInsensitive), !disguised);
    }

    void validationFailuresNeverReachTheTool() {
        QTemporaryDir support;
        RecordingRunner tool;
        VaultManager vault(support.path(), tool.runner());
        SetupForm form;
        form.setVault(&vault);

        form.setPassword("abcdefg");
        form.setConfirm("abcdefg");
        form.create();
        QCOMPARE(form.error(), "Password must be at least 8 characters.");
        form.setPassword("abcdefgh");
        form.create();
        QCOMPARE(form.error(), "Passwords do not match.");
        form.setPassword("abcdefgh\n");
        form.setConfirm("abcdefgh\n");
        form.create();
        QCOMPARE(form.error(), *unusablePasswordReason(form.password()));
        QVERIFY(!form.busy());
        QCoreApplication::processEvents();
        QVERIFY(tool.calls.isEmpty());
    }

    void createsThenUnlocksWithTheSamePassword() {
        QTemporaryDir support;
        RecordingRunner tool;
        VaultManager vault(support.path(), creatingRunner(tool));
        tool.replies = {{0, {}, {}},
                        RecordingRunner::attached("/mnt/v")};
        SetupForm form;
        form.setVault(&vault);
        form.setPassword(" pass word ");
        form.setConfirm(" pass word ");
        form.create();
        // Busy at once; the tool runs on the engine's worker.
        QVERIFY(form.busy());
        QCOMPARE(form.buttonLabel(), "Creating...");
        // Published back on this thread once both runs are over.
        QTRY_VERIFY(vault.isUnlocked());
        QCOMPARE(tool.calls.size(), 2);
        QCOMPARE(tool.calls[0].args.first(), "create");
        QCOMPARE(tool.calls[1].args.first(), "attach");
        QCOMPARE(tool.calls[0].stdinText, " pass word ");
        QCOMPARE(tool.calls[1].stdinText, " pass word ");
        QVERIFY(form.busy());
        QCOMPARE(form.error(), QString());
    }

    void aVaultThatWillNotOpenAfterCreationIsReported() {
        QTemporaryDir support;
        RecordingRunner tool;
        VaultManager vault(support.path(), creatingRunner(tool));
        tool.replies = {{0, {}, {}}, {1, {}, "morvanta-hdiutil: attach failed - no FUSE."}};
        SetupForm form;
        form.setVault(&vault);
        form.setPassword("abcdefgh");
        form.setConfirm("abcdefgh");
        form.create();
        QTRY_VERIFY(!form.busy());
        QCOMPARE(form.error(), "Authentication failed.");
        QVERIFY(vault.vaultExists());
        QVERIFY(!vault.isUnlocked());
        QCOMPARE(form.password(), "abcdefgh");
    }

    void anEngineFailureIsShownAndThePasswordsKept() {
        QTemporaryDir support;
        RecordingRunner tool;
        VaultManager vault(support.path(), tool.runner());
        tool.replies = {{1, {}, "morvanta-hdiutil: create failed - No space left on device."}};
        SetupForm form;
        form.setVault(&vault);
        form.setPassword("abcdefgh");
        form.setConfirm("abcdefgh");
        form.create();
        QTRY_VERIFY(!form.busy());
        QCOMPARE(form.error(),
                 "Create failed: morvanta-hdiutil: create failed - No space left on device.");
        QCOMPARE(form.password(), "abcdefgh");
        QCOMPARE(form.confirm(), "abcdefgh");
        QCOMPARE(tool.calls.size(), 1);
    }
};

QTEST_MAIN(TestSetupForm)
#include "tst_setupform.moc"
