#include "engine/HDIUtil.h"

#include <QTest>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <plist/plist.h>

Q_DECLARE_METATYPE(std::optional<QString>)

namespace {

// Runs a shell script as if it were the disk-image tool.
HDIUtilResult runScript(const QString& script, const std::optional<QString>& stdinText,
                        const QStringList& extraArgs = {}) {
    return runHDIUtilProgram(QStringLiteral("/bin/sh"),
                             QStringList{"-c", script, "tool"} + extraArgs, stdinText);
}

QString hexOfStdin(const std::optional<QString>& stdinText) {
    return runScript("od -An -tx1 -v | tr -d ' \\n'", stdinText).stdout;
}

// What the disk-image tool prints on macOS, with a blank mount point added.
const char* kAttachXml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n<dict>\n\t<key>system-entities</key>\n\t<array>\n"
    "\t\t<dict><key>content-hint</key><string>GUID_partition_scheme</string>\n"
    "\t\t      <key>dev-entry</key><string>/dev/disk4</string></dict>\n"
    "\t\t<dict><key>content-hint</key><string>Apple_APFS</string>\n"
    "\t\t      <key>mount-point</key><string></string></dict>\n"
    "\t\t<dict><key>content-hint</key><string>41504653-0000-11AA-AA11-00306543ECAC</string>\n"
    "\t\t      <key>mount-point</key><string>/Volumes/MorvantaVault \u00FCn\u00EF</string></dict>\n"
    "\t\t<dict><key>mount-point</key><string>/Volumes/Second</string></dict>\n"
    "\t</array>\n</dict>\n</plist>\n";

QByteArray binaryPlist(plist_t root) {
    char* data = nullptr;
    uint32_t length = 0;
    plist_to_bin(root, &data, &length);
    QByteArray bytes(data, length);
    plist_to_bin_free(data);
    plist_free(root);
    return bytes;
}

} // namespace

class TestHDIUtil : public QObject {
    Q_OBJECT

private slots:
    void writesExactlyTheTextsBytes_data() {
        QTest::addColumn<std::optional<QString>>("stdinText");
        QTest::addColumn<QString>("hex");
        QTest::newRow("spaces kept, no terminator") << std::optional<QString>(" a b ") << "2061206220";
        QTest::newRow("non-ASCII as UTF-8") << std::optional<QString>("é€") << "c3a9e282ac";
        QTest::newRow("NULs go through") << std::optional<QString>(QString::fromUtf8("o\0n\0", 4))
                                         << "6f006e00";
        QTest::newRow("empty text: nothing written") << std::optional<QString>("") << "";
        QTest::newRow("lone surrogate: nothing written")
            << std::optional<QString>(QString(QChar(0xD800))) << "";
    }
    void writesExactlyTheTextsBytes() {
        QFETCH(std::optional<QString>, stdinText);
        QFETCH(QString, hex);
        QCOMPARE(hexOfStdin(stdinText), hex);
    }

    void givesAPipeOnlyWhenThereIsInput() {
        const QString script = "if [ -p /dev/stdin ]; then echo pipe; else echo other; fi";
        QCOMPARE(runScript(script, QString()).stdout, "pipe\n");
        QCOMPARE(runScript(script, std::nullopt).stdout, "other\n");
    }

    void reportsStatusAndBothOutputs() {
        const HDIUtilResult result = runScript("printf 'out %s|' \"$@\"; echo err >&2; exit 3",
                                               std::nullopt, {"a b", "-c;d", "ü"});
        QCOMPARE(result, (HDIUtilResult{3, "out a b|out -c;d|out ü|", "err\n"}));
    }

    void undecodableOutputReadsAsEmpty() {
        const HDIUtilResult result = runScript("printf '\\377\\376'; printf 'fine' >&2", {});
        QCOMPARE(result.stdout, QString());
        QCOMPARE(result.stderr, "fine");
    }

    void survivesAToolThatIgnoresItsInput() {
        // More than a pipe holds, to a tool that exits at once: the write fails, quietly.
        const HDIUtilResult result = runScript("exit 4", QString(1 << 20, 'x'));
        QCOMPARE(result.status, 4);
    }

    void reportsAToolThatCannotStart() {
        const HDIUtilResult result =
            runHDIUtilProgram("/nonexistent/morvanta-hdiutil", {"info"}, QString("secret"));
        QCOMPARE(result.status, -1);
        QVERIFY(result.stdout.isEmpty());
        QVERIFY2(result.stderr.contains("No such file"), qPrintable(result.stderr));
    }

    void runsTheToolBesideTheExecutable() {
        const HDIUtilResult result = runHDIUtilProcess({"info", "-plist"}, std::nullopt);
        QCOMPARE(result.status, 0);
        QVERIFY2(result.stdout.contains("<key>images</key>"), qPrintable(result.stdout));
    }

    void readsBinaryLists() {
        plist_t root = plist_new_dict();
        plist_t entities = plist_new_array();
        plist_t partition = plist_new_dict();
        plist_dict_set_item(partition, "mount-point", plist_new_uint(7));
        plist_array_append_item(entities, partition);
        plist_t volume = plist_new_dict();
        plist_dict_set_item(volume, "mount-point", plist_new_string("/Volumes/Bin ü"));
        plist_array_append_item(entities, volume);
        plist_dict_set_item(root, "system-entities", entities);
        QCOMPARE(parseMountPoint(binaryPlist(root)), QString::fromUtf8("/Volumes/Bin ü"));
    }

    void findsTheMountPoint_data() {
        QTest::addColumn<QString>("plist");
        QTest::addColumn<std::optional<QString>>("mountPoint");

        QTest::newRow("third entry, after a blank one")
            << QString::fromUtf8(kAttachXml)
            << std::optional<QString>(QString::fromUtf8("/Volumes/MorvantaVault \u00FCn\u00EF"));

        const std::optional<QString> none;
        QTest::newRow("error text") << "hdiutil: attach failed - Authentication error\n" << none;
        QTest::newRow("empty") << "" << none;
        QTest::newRow("truncated") << QString::fromUtf8(kAttachXml).left(300) << none;
        QTest::newRow("root is an array")
            << "<plist><array><dict><key>mount-point</key><string>/x</string></dict></array></plist>"
            << none;
        QTest::newRow("entities not an array")
            << "<plist><dict><key>system-entities</key><string>/x</string></dict></plist>" << none;
        QTest::newRow("an entity is not a dictionary")
            << "<plist><dict><key>system-entities</key><array><string>/y</string><dict><key>"
               "mount-point</key><string>/x</string></dict></array></dict></plist>"
            << none;
        QTest::newRow("only empty mount points")
            << "<plist><dict><key>system-entities</key><array><dict><key>mount-point</key>"
               "<string></string></dict></array></dict></plist>"
            << none;
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
        QCOMPARE(parseMountPoint(QString::fromLatin1(deep)), std::nullopt);
        const QByteArray nested = "<plist><dict><key>system-entities</key>" +
                                  QByteArray("<array>").repeated(8000) +
                                  QByteArray("</array>").repeated(8000) + "</dict></plist>";
        QCOMPARE(parseMountPoint(nested), std::nullopt);

        // Damaged answers: every one reads as "no mount point", none crashes.
        const QByteArray valid = QByteArray(kAttachXml);
        QRandomGenerator random(7);
        for (int i = 0; i < 3000; ++i) {
            QByteArray damaged = valid;
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
        const QString other = dir.filePath("other.gocryptfs");
        QVERIFY(QDir().mkpath(image) && QDir().mkpath(other));
        const QString info =
            "<plist><dict><key>images</key><array>"
            "<dict><key>image-path</key><string>" + other + "</string><key>system-entities</key>"
            "<array><dict><key>mount-point</key><string>/run/o</string></dict></array></dict>"
            "<dict><key>image-path</key><string>" + dir.path() + "/./vault.gocryptfs</string>"
            "<key>system-entities</key><array><dict><key>mount-point</key><string>/run/v</string>"
            "</dict></array></dict>"
            "<dict><key>image-path</key><integer>1</integer></dict>"
            "</array></dict></plist>";
        QCOMPARE(parseAttachedMountPoints(info, image), QStringList{"/run/v"});
        QCOMPARE(parseAttachedMountPoints("<plist><dict><key>images</key><array/></dict></plist>", image),
                 QStringList());
        QCOMPARE(parseAttachedMountPoints("garbage", image), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestHDIUtil)
#include "tst_hdiutil.moc"
