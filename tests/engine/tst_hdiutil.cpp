#include "engine/HDIUtil.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

Q_DECLARE_METATYPE(std::optional<QString>)

namespace {

// Runs a shell script as if it were the disk-image tool.
HDIUtilResult runScript(const QString& script, const std::optional<QString>& stdinText,
                        const QStringList& extraArgs = {}) {
    return runHDIUtilProgram(QStringLiteral("/bin/sh"),
                             QStringList{"-c", script, "tool"} + extraArgs, stdinText);
}

// What the disk-image tool prints on macOS, with a blank mount point added.
const char* kAttachXml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
    "<key>system-entities</key>\n<array>\n"
    "<dict><key>dev-entry</key><string>/dev/disk4</string></dict>\n"
    "<dict><key>mount-point</key><string></string></dict>\n"
    "<dict><key>mount-point</key><string>/Volumes/MorvantaVault \u00FCn\u00EF</string></dict>\n"
    "<dict><key>mount-point</key><string>/Volumes/Second</string></dict>\n"
    "</array>\n</dict>\n</plist>\n";

} // namespace

class TestHDIUtil : public QObject {
    Q_OBJECT

private slots:
    // The password's bytes exactly, on a pipe only when there is one to give.
    void writesExactlyTheTextsBytes_data() {
        QTest::addColumn<std::optional<QString>>("stdinText");
        QTest::addColumn<QString>("seen");
        QTest::newRow("spaces kept, no terminator") << std::optional<QString>(" a b ") << "2061206220 pipe";
        QTest::newRow("non-ASCII as UTF-8") << std::optional<QString>("é€") << "c3a9e282ac pipe";
        QTest::newRow("NULs go through")
            << std::optional<QString>(QString::fromUtf8("o\0n\0", 4)) << "6f006e00 pipe";
        QTest::newRow("empty") << std::optional<QString>("") << " pipe";
        QTest::newRow("none") << std::optional<QString>() << " other";
    }
    void writesExactlyTheTextsBytes() {
        QFETCH(std::optional<QString>, stdinText);
        QFETCH(QString, seen);
        const QString script = "[ -p /dev/stdin ] && k=pipe || k=other; printf '%s %s' \"$(od -An -tx1 -v | "
                               "tr -d ' \\n')\" $k";
        QCOMPARE(runScript(script, stdinText).stdout, seen);
    }

    void reportsStatusOutputsAndFailuresToStart() {
        QCOMPARE(runScript("printf 'out %s|' \"$@\"; echo err >&2; exit 3", std::nullopt,
                           {"a b", "-c;d", "ü"}),
                 (HDIUtilResult{3, "out a b|out -c;d|out ü|", "err\n"}));
        // More than a pipe holds, to a tool that exits at once: the write fails, quietly.
        QCOMPARE(runScript("exit 4", QString(1 << 20, 'x')).status, 4);
        const HDIUtilResult missing =
            runHDIUtilProgram("/nonexistent/morvanta-hdiutil", {"info"}, QString("x"));
        QCOMPARE(missing.status, -1);
        QVERIFY2(missing.stderr.contains("No such file"), qPrintable(missing.stderr));
        QVERIFY(runHDIUtilProcess({"info", "-plist"}, std::nullopt).stdout.contains("<key>images</key>"));
    }

    void findsTheMountPoint_data() {
        QTest::addColumn<QString>("plist");
        QTest::addColumn<std::optional<QString>>("mountPoint");
        QTest::newRow("first non-blank one")
            << QString::fromUtf8(kAttachXml)
            << std::optional<QString>(QString::fromUtf8("/Volumes/MorvantaVault ünï"));
        QTest::newRow("error text") << "hdiutil: attach failed - Authentication error\n"
                                    << std::optional<QString>();
        QTest::newRow("truncated") << QString::fromUtf8(kAttachXml).left(200) << std::optional<QString>();
        QTest::newRow("an entity is not a dictionary")
            << "<plist><dict><key>system-entities</key><array><string>/y</string></array></dict></plist>"
            << std::optional<QString>();
    }
    void findsTheMountPoint() {
        QFETCH(QString, plist);
        QFETCH(std::optional<QString>, mountPoint);
        QCOMPARE(parseMountPoint(plist), mountPoint);
    }

    void survivesHostileLists() {
        // Nesting deep enough to exhaust the stack of a recursive parser.
        const QByteArray deep = "<plist><dict><key>system-entities</key>" +
                                QByteArray("<array>").repeated(300000) +
                                QByteArray("</array>").repeated(300000) + "</dict></plist>";
        QCOMPARE(parseMountPoint(deep), std::nullopt);
        // Damaged answers: every one reads as "no mount point" or a real one, none crashes.
        QRandomGenerator random(7);
        for (int i = 0; i < 2000; ++i) {
            QByteArray damaged(kAttachXml);
            for (int k = 0; k < 4; ++k)
                damaged[random.bounded(damaged.size())] = char(random.bounded(256));
            damaged.truncate(random.bounded(damaged.size()) + 1);
            const auto found = parseMountPoint(damaged);
            QVERIFY(!found || !found->isEmpty());
        }
    }

    void findsTheMountsOfOneImage() {
        QTemporaryDir dir;
        const QString image = dir.filePath("vault.gocryptfs");
        QVERIFY(QDir().mkpath(image) && QDir().mkpath(dir.filePath("other.gocryptfs")));
        const auto entry = [](const QString& path, const QString& mount) {
            return "<dict><key>image-path</key><string>" + path + "</string><key>system-entities</key><array>"
                   "<dict><key>mount-point</key><string>" + mount + "</string></dict></array></dict>";
        };
        const QString info = "<plist><dict><key>images</key><array>" +
                             entry(dir.filePath("other.gocryptfs"), "/run/o") +
                             entry(dir.path() + "/./vault.gocryptfs", "/run/v") +
                             "</array></dict></plist>";
        QCOMPARE(parseAttachedMountPoints(info, image), QStringList{"/run/v"});
        QCOMPARE(parseAttachedMountPoints("garbage", image), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestHDIUtil)
#include "tst_hdiutil.moc"
