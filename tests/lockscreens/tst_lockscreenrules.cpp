// The smaller rules of the lock and first-run screens: the disguise setting as the screens
// read it, the password lock screen's faces and failures, the welcome pages' paging and
// texts, and the symbols every screen draws.

#include "lockscreens/DisguiseMode.h"
#include "lockscreens/SymbolIcon.h"
#include "lockscreens/UnlockForm.h"
#include "lockscreens/WelcomePager.h"
#include "support/RecordingRunner.h"

#include <QDir>
#include <QDirIterator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestLockScreenRules : public QObject {
    Q_OBJECT

private slots:
    void disguiseModeReadsUnknownTextAsNone() {
        for (const auto& [raw, mode] : QList<std::pair<QString, DisguiseMode>>{
                 {"neutral", DisguiseMode::neutral}, {"math", DisguiseMode::math},
                 {"none", DisguiseMode::none}, {"", DisguiseMode::none},
                 {"Math", DisguiseMode::none}, {" neutral", DisguiseMode::none}}) {
            QCOMPARE(disguiseModeOrNone(raw), mode);
            QCOMPARE(isDisguised(raw), mode != DisguiseMode::none);
            QCOMPARE(disguiseModeFromRaw(raw).has_value(), rawValue(mode) == raw);
        }
    }

    // A password the tool cannot take, or no vault at all: refused without the tool. Then on
    // both faces the password goes to the tool as typed, once however often pressed, and a
    // failure clears it; the neutral face never gives the vault away.
    void unlocking() {
        QTemporaryDir support;
        RecordingRunner tool;
        VaultManager vault(support.path(), tool.runner());
        UnlockForm refused;
        refused.setVault(&vault);
        refused.setPassword(QString("pasted").append(QChar(0)));
        refused.unlock();
        QVERIFY(!refused.busy());
        QCOMPARE(refused.error(), *unusablePasswordReason(refused.password()));
        refused.setPassword("whatever");
        refused.unlock();
        QTRY_VERIFY(!refused.busy());
        QVERIFY(!refused.error().isEmpty());
        QVERIFY(tool.calls.isEmpty());

        QVERIFY(QDir().mkpath(vault.bundlePath()));
        tool.replies = {{1, {}, "morvanta-hdiutil: attach failed - Password incorrect."}, {1, {}, {}}};
        for (bool stealth : {false, true}) {
            UnlockForm form;
            QSignalSpy relabelled(&form, &UnlockForm::buttonLabelChanged);
            form.setVault(&vault);
            form.setStealth(stealth);
            QCOMPARE(relabelled.count(), int(stealth));
            const QStringList texts{form.title(), form.subtitle(), form.placeholder(), form.buttonLabel()};
            QCOMPARE(texts.join('\n').contains("vault", Qt::CaseInsensitive), !stealth);
            const QString idleLabel = form.buttonLabel();
            form.setPassword("  spaced out  ");
            form.unlock();
            QVERIFY(form.busy());
            QVERIFY(form.buttonLabel() != idleLabel);
            form.unlock();
            QTRY_VERIFY(!form.busy());
            QVERIFY(!form.error().isEmpty());
            QCOMPARE(form.password(), QString());
            QCOMPARE(form.buttonLabel(), idleLabel);
        }
        QCOMPARE(tool.calls.size(), 2);
        QCOMPARE(tool.calls[0].stdinText, "  spaced out  ");
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
};

QTEST_MAIN(TestLockScreenRules)
#include "tst_lockscreenrules.moc"
