// Cold start to the first frame: a new `morvanta` process against a minimal Qt Quick window
// and a minimal Qt Quick Controls window, started the same way (same environment, software
// rendering), in turn, in one run. The first frame is the moment the scene graph reports its
// first rendered frame. Besides the time, the processor time the process has used by then
// (all its threads), which a busy machine disturbs less. Morvanta starts as a first run
// would (no vault: the welcome pages) and as it usually does (a locked vault: the lock
// screen). Each is timed with the programs' files in the page cache, as when started again
// soon, and, where the benchmark may empty that cache (as root), from the disk, as the first
// start after logging in. And each on an X display (Xvfb, with a session bus), as a desktop
// starts it, and offscreen, with no display server, which leaves only the programs' own work.
//   bench_startup [runs]

#include "BenchSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <unistd.h>

namespace {

struct Start {
    double ms = -1;    // to the first frame; -1 when it never showed one
    double cpuMs = -1; // processor time of all its threads by then
};

// Milliseconds that every thread of `pid` has run so far, as the scheduler counts them.
double cpuMillisecondsOf(qint64 pid) {
    double total = 0;
    const QString tasks = QStringLiteral("/proc/%1/task").arg(pid);
    for (const QString& task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile stat(tasks + '/' + task + QStringLiteral("/schedstat"));
        if (stat.open(QIODevice::ReadOnly))
            total += stat.readAll().split(' ').value(0).toDouble() / 1e6;
    }
    return total;
}

Start firstFrame(const QString& program, const QStringList& arguments,
                 const QProcessEnvironment& environment) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProgram(program);
    process.setArguments(arguments);
    process.setStandardOutputFile(QProcess::nullDevice());
    QElapsedTimer timer;
    Start shown;
    QByteArray log;
    QObject::connect(&process, &QProcess::readyReadStandardError, [&] {
        log += process.readAllStandardError();
        if (shown.ms < 0 && log.contains("Frame rendered")) {
            shown.ms = double(timer.nsecsElapsed()) / 1e6;
            shown.cpuMs = cpuMillisecondsOf(process.processId());
        }
    });
    timer.start();
    process.start();
    while (shown.ms < 0 && process.state() != QProcess::NotRunning && timer.elapsed() < 30000)
        process.waitForReadyRead(100);
    process.terminate();
    if (!process.waitForFinished(10000))
        process.kill();
    process.waitForFinished();
    if (shown.ms < 0)
        std::fprintf(stderr, "%s showed no frame:\n%s\n", qPrintable(program), log.constData());
    return shown;
}

// A server of the benchmark's own for the starts on an X display, as a desktop session has
// them, running until the end: its first line on the standard output says where it listens.
class Server {
public:
    Server(const QString& program, const QStringList& arguments) {
        const QString path = QStandardPaths::findExecutable(program);
        if (path.isEmpty())
            return;
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(path, arguments);
        QByteArray line;
        while (!line.contains('\n') && m_process.waitForReadyRead(10000))
            line += m_process.readAllStandardOutput();
        m_address = QString::fromLocal8Bit(line.trimmed());
    }
    ~Server() {
        m_process.terminate();
        m_process.waitForFinished();
    }
    QString address() const { return m_address; } // empty where it did not start

private:
    QProcess m_process;
    QString m_address;
};

// Writes what is waiting and empties the page cache, so that the next start reads every
// file it needs from the disk. Needs root; false where not allowed.
bool dropPageCache() {
    sync();
    QFile control(QStringLiteral("/proc/sys/vm/drop_caches"));
    return control.open(QIODevice::WriteOnly) && control.write("3") == 1;
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::atoi(argv[1]) : 15;
    const QString bin = QCoreApplication::applicationDirPath();

    QTemporaryDir firstRun, locked, runtime;
    {
        // Made by the shipped tool with the shipped key derivation; creating leaves it locked.
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
        VaultManager vault(locked.filePath(".local/share/Morvanta"));
        vault.createVault(QStringLiteral("bench"));
    }
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_RUNTIME_DIR", runtime.path());
    for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
        environment.remove(name);
    environment.insert("QT_QUICK_BACKEND", "software");
    environment.insert("QT_LOGGING_RULES", "qt.scenegraph.time.renderloop.debug=true");

    // The X server picks a free display number; the session bus is where the window's
    // accessibility finds the screen reader's.
    Server x(QStringLiteral("Xvfb"),
             {"-displayfd", "1", "-nolisten", "tcp", "-screen", "0", "1280x800x24"});
    Server bus(QStringLiteral("dbus-daemon"), {"--session", "--nofork", "--print-address=1"});
    struct Display {
        const char* label;
        QString platform, name;
    };
    QList<Display> displays{{"X display", QStringLiteral("xcb"), ':' + x.address()},
                            {"offscreen", QStringLiteral("offscreen"), {}}};
    const bool fromTheDisk = dropPageCache();

    std::printf("\n## Start-up: first frame of a new process (median of %d runs)\n\n", runs);
    std::printf(
        "Milliseconds to the first frame, and in brackets the processor time used by then.\n");
    if (x.address().isEmpty()) {
        displays.removeFirst();
        std::printf("On an X display: not measured, Xvfb is not installed or did not start.\n");
    }
    if (!fromTheDisk)
        std::printf("From the disk: not measured, emptying the page cache needs root.\n");
    std::printf(
        "\n| start | Morvanta | Qt Quick window | ratio | Qt Quick Controls window | ratio |\n"
        "|---|---:|---:|---:|---:|---:|\n");
    const auto cell = [](const QList<Start>& starts) {
        QList<double> ms, cpu;
        for (const Start& start : starts) {
            ms.append(start.ms);
            cpu.append(start.cpuMs);
        }
        return std::pair(bench::median(ms), bench::median(cpu));
    };
    for (const Display& display : displays) {
        environment.insert("QT_QPA_PLATFORM", display.platform);
        environment.insert("DISPLAY", display.name);
        environment.insert("DBUS_SESSION_BUS_ADDRESS", bus.address());
        for (const bool cold : {false, true}) {
            if (cold && !fromTheDisk)
                break;
            for (const bool withVault : {false, true}) {
                environment.insert("HOME", withVault ? locked.path() : firstRun.path());
                const auto start = [&](const QString& program, const QStringList& arguments) {
                    if (cold)
                        dropPageCache();
                    return firstFrame(program, arguments, environment);
                };
                QList<Start> morvanta, window, controls;
                for (int i = 0; i < runs; ++i) {
                    morvanta.append(start(bin + "/morvanta", {}));
                    window.append(start(bin + "/startup_minimal", {}));
                    controls.append(start(bin + "/startup_minimal", {"--controls"}));
                }
                const auto [m, mCpu] = cell(morvanta);
                const auto [w, wCpu] = cell(window);
                const auto [c, cCpu] = cell(controls);
                std::printf("| %s, %s, %s | %.0f (%.0f) | %.0f (%.0f) | %.2f (%.2f) | %.0f (%.0f) "
                            "| %.2f (%.2f) |\n",
                            withVault ? "a locked vault (lock screen)"
                                      : "first run (welcome pages)",
                            cold ? "from the disk" : "cached", display.label, m, mCpu, w, wCpu,
                            m / w, mCpu / wCpu, c, cCpu, m / c, mCpu / cCpu);
            }
        }
    }
    return 0;
}
