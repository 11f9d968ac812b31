// The smaller rules of the lock and first-run screens: the disguise setting as the screens
// read it, the password lock screen's faces and failures, the welcome pages' paging and
// texts, and the symbols every screen draws.

#include "lockscreens/DisguiseMode.h"
#include "lockscreens/MainLoop.h"
#include "lockscreens/SymbolIcon.h"
#include "lockscreens/UnlockForm.h"
#include "lockscreens/WelcomePager.h"
#include "support/RecordingRunner.h"

#include <QDir>
#include <QDirIterator>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestLockScreenRules : public QObject {
    Q_OBJECT

private slots:
    void disguiseModeReadsUnknownTextAsNone_data() {
        QTest::addColumn<QString>("raw");
        QTest::addColumn<DisguiseMode>("mode");
        QTest::addColumn<bool>("known");
        QTest::addColumn<QString>("title");
        QTest::newRow("none") << "none" << DisguiseMode::none << true << "Morvanta";
        QTest::newRow("neutral") << "neutral" << DisguiseMode::neutral << true << "Workspace";
        QTest::newRow("math") << "math" << DisguiseMode::math << true << "Calculator";
        QTest::newRow("empty") << "" << DisguiseMode::none << false << "Morvanta";
        QTest::newRow("other case") << "Math" << DisguiseMode::none << false << "Morvanta";
        QTest::newRow("padded") << " neutral" << DisguiseMode::none << false << "Morvanta";
    }
    void disguiseModeReadsUnknownTextAsNone() {
        QFETCH(QString, raw);
        QFETCH(DisguiseMode, mode);
        QFETCH(bool, known);
        QFETCH(QString, title);
        QCOMPARE(disguiseModeFromRaw(raw).has_value(), known);
        QCOMPARE(disguiseModeOrNone(raw), mode);
        QCOMPARE(isDisguised(raw), mode != DisguiseMode::none);
        QCOMPARE(windowTitle(raw), title);
        if (known)
            QCOMPARE(rawValue(mode), raw);
    }

    // The engine blocks the thread, so the busy state must be painted before it runs.
    void engineWorkWaitsForAFrame() {
        QQuickWindow window;
        window.resize(200, 200);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTest::qWait(50);
        int frames = 0;
        connect(&window, &QQuickWindow::frameSwapped, this, [&frames] { ++frames; });
        int framesBeforeWork = -1;
        runAfterNextFrame(this, [&] { framesBeforeWork = frames; });
        QCOMPARE(framesBeforeWork, -1);
        QTRY_VERIFY(framesBeforeWork != -1);
        QVERIFY(framesBeforeWork >= 1);

        // Work whose screen has gone is dropped.
        auto* gone = new QObject;
        bool ran = false;
        runAfterNextFrame(gone, [&ran] { ran = true; });
        delete gone;
        QTest::qWait(300);
        QVERIFY(!ran);
    }

    // The neutral face must not give the vault away.
    void theSignInFaceNeverMentionsAVault() {
        UnlockForm form;
        QSignalSpy relabelled(&form, &UnlockForm::buttonLabelChanged);
        form.setStealth(true);
        QCOMPARE(relabelled.count(), 1);
        for (const QString& text :
             {form.title(), form.subtitle(), form.placeholder(), form.buttonLabel()})
            QVERIFY2(!text.contains("vault", Qt::CaseInsensitive), qPrintable(text));
    }

    void unlockTriesThePasswordAsTypedAndClearsItOnFailure() {
        QTemporaryDir support;
        RecordingRunner tool;
        VaultManager vault(support.path(), tool.runner());
        QVERIFY(QDir().mkpath(vault.bundlePath()));
        tool.replies = {{1, {}, "morvanta-hdiutil: attach failed - Password incorrect."}};
        for (bool stealth : {false, true}) {
            UnlockForm form;
            form.setVault(&vault);
            form.setStealth(stealth);
            form.setPassword("  spaced out  ");
            form.unlock();
            QVERIFY(form.busy());
            QCOMPARE(form.buttonLabel(), stealth ? "Signing in..." : "Unlocking...");
            // Pressed again while busy: no second attempt.
            form.unlock();
            QTRY_VERIFY(!form.busy());
            QCOMPARE(form.error(), "Authentication failed.");
            QCOMPARE(form.password(), QString());
            QCOMPARE(form.buttonLabel(), stealth ? "Sign in" : "Unlock");
            tool.replies = {{1, {}, {}}};
        }
        QCOMPARE(tool.calls.size(), 2);
        QCOMPARE(tool.calls[0].stdinText, "  spaced out  ");
    }

    void unlockRefusalsRunNoTool() {
        QTemporaryDir support;
        RecordingRunner tool;
        VaultManager vault(support.path(), tool.runner());
        UnlockForm form;
        form.setVault(&vault);
        form.setPassword(QString("pasted").append(QChar(0)));
        form.unlock();
        QVERIFY(!form.busy());
        QCOMPARE(form.error(), *unusablePasswordReason(form.password()));
        form.setPassword("whatever");
        form.unlock();
        QTRY_VERIFY(!form.busy());
        QCOMPARE(form.error(), "Vault not initialized.");
        QVERIFY(tool.calls.isEmpty());
    }

    void welcomePaging() {
        WelcomePager pager;
        pager.setCtaLabel("Get Started");
        QSignalSpy continued(&pager, &WelcomePager::continued);
        QCOMPARE(pager.page(), 0);
        QVERIFY(!pager.canGoBack());
        pager.back();
        QCOMPARE(pager.page(), 0);
        QCOMPARE(pager.forwardLabel(), "Next");
        pager.advance();
        pager.advance();
        QCOMPARE(pager.page(), 2);
        QCOMPARE(pager.forwardLabel(), "Get Started");
        QCOMPARE(continued.count(), 0);
        pager.advance();
        pager.advance();
        QCOMPARE(continued.count(), 2);
        QCOMPARE(pager.page(), 2);
        pager.back();
        QCOMPARE(pager.page(), 1);
        QCOMPARE(pager.forwardLabel(), "Next");

        WelcomePager about;
        about.setCtaLabel("Done");
        about.advance();
        about.advance();
        QCOMPARE(about.forwardLabel(), "Done");
    }

    // No text may say something false about the platform it runs on.
    void welcomeTextsNameThisPlatform() {
        QStringList texts{WelcomePager::introSubtitle(), WelcomePager::backupText()};
        for (const QVariant& card : WelcomePager::featureCards())
            texts << card.toMap().value("title").toString()
                  << card.toMap().value("text").toString();
        QCOMPARE(texts.size(), 14);
        QVERIFY(texts.first().endsWith("for Linux"));
        for (const char* word :
             {"Mac", "Finder", "Spotlight", "Apple", "SwiftUI", "\u2318", ".dmg"})
            QVERIFY2(!texts.join('\n').contains(QString::fromUtf8(word)), word);
    }

    // Every symbol name used in the screens' QML must have an icon that draws something.
    void everySymbolTheScreensNameIsDrawn() {
        QSet<QString> named;
        const QRegularExpression symbolName(R"re((?:symbol|name|icon):\s*"([A-Za-z.]+)")re");
        for (QDirIterator it(":/qt/qml/Morvanta", {"*.qml"}, QDir::Files,
                             QDirIterator::Subdirectories);
             it.hasNext();) {
            QFile file(it.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString source = QString::fromUtf8(file.readAll());
            for (const QRegularExpressionMatch& m : symbolName.globalMatch(source))
                named.insert(m.captured(1));
        }
        for (const QVariant& card : WelcomePager::featureCards())
            named.insert(card.toMap().value("icon").toString());
        named.insert("checkmark.circle.fill");
        named.insert("xmark.circle.fill");
        QVERIFY(named.size() > 12);

        for (const QString& name : named) {
            QVERIFY2(!SymbolIcon::resourceFor(name).isEmpty(), qPrintable(name));
            const QImage image = SymbolIcon::render(name, Qt::red, {32, 32});
            QVERIFY2(!image.isNull(), qPrintable(name));
            int inked = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    inked += qAlpha(image.pixel(x, y)) > 128;
            // Neither empty nor a filled square: a real shape.
            QVERIFY2(inked > 40 && inked < 32 * 32 * 9 / 10, qPrintable(name));
        }
        QVERIFY(SymbolIcon::resourceFor("no.such.symbol").isEmpty());
        QVERIFY(SymbolIcon::render("no.such.symbol", Qt::red, {32, 32}).isNull());
    }

    void symbolsTakeTheirColour() {
        const QImage image = SymbolIcon::render("lock.fill", QColor(0, 200, 0), {48, 48});
        const QRgb centre = image.pixel(24, 36);
        QCOMPARE(qAlpha(centre), 255);
        QCOMPARE(qGreen(centre), 200);
        QCOMPARE(qRed(centre), 0);
    }
};

QTEST_MAIN(TestLockScreenRules)
#include "tst_lockscreenrules.moc"
