#include "engine/HDIUtil.h"

#include <QTest>

namespace {

// Runs a shell script as if it were the disk-image tool.
HDIUtilResult runScript(const QString& script, const std::optional<QString>& stdinText,
                        const QStringList& extraArgs = {}) {
    return runHDIUtilProgram(QStringLiteral("/bin/sh"),
                             QStringList{"-c", script, "tool"} + extraArgs, stdinText);
}

// What the disk-image tool prints on macOS, with a blank mount point added.
const char* kAttachXml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict><key>system-entities</key><array>\n"
    "<dict><key>dev-entry</key><string>/dev/disk4</string></dict><dict><key>mount-point</key><string></string></dict>\n"
    "<dict><key>mount-point</key><string>/Volumes/MorvantaVault \u00FCn\u00EF</string></dict>\n"
    "<dict><key>mount-point</key><string>/Volumes/Second</string></dict></array></dict></plist>\n";

} // namespace

class TestHDIUtil : public QObject {
    Q_OBJECT

private slots:
    void runsTheToolWithExactBytesAndReportsWhatItSaid() {
        // The password's UTF-8 bytes exactly, NULs and spaces kept, no terminator, on a pipe;
        // no pipe at all when there is nothing to give.
        const QString seen = "[ -p /dev/stdin ] && k=pipe || k=other; printf '%s %s' \"$(od -An -tx1 -v | "
                             "tr -d ' \\n')\" $k";
        QCOMPARE(runScript(seen, QString::fromUtf8(" \xc3\xa9\0", 4)).stdout, "20c3a900 pipe");
        QCOMPARE(runScript(seen, std::nullopt).stdout, " other");
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

    // The first non-blank mount point; nothing from a list an entity of which is not a
    // dictionary, nested too deeply for a recursive parser, or cut short.
    void findsTheMountPointInWhateverTheToolSays() {
        QCOMPARE(parseMountPoint(QString::fromUtf8(kAttachXml)), QString::fromUtf8("/Volumes/MorvantaVault ünï"));
        QCOMPARE(parseMountPoint(QByteArray("<plist><dict><key>system-entities</key><array><string>/y</string>"
                                            "<dict><key>mount-point</key><string>/x</string></dict>"
                                            "</array></dict></plist>")),
                 std::nullopt);
        const QByteArray deep = "<plist><dict><key>system-entities</key>" +
                                QByteArray("<array>").repeated(300000) +
                                QByteArray("</array>").repeated(300000) + "</dict></plist>";
        QCOMPARE(parseMountPoint(deep), std::nullopt);
        QCOMPARE(parseMountPoint(QString::fromUtf8(kAttachXml).left(200)), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestHDIUtil)
#include "tst_hdiutil.moc"
