// Cold start to the first frame: a new `morvanta` process against a minimal Qt Quick window
// started the same way (same environment, offscreen, software rendering), alternately, in
// one run. The first frame is the moment the scene graph reports its first rendered frame.
// Morvanta starts as a first run would (no vault: the welcome pages) and as it usually
// does (a locked vault: the lock screen).
//   bench_startup [runs]

#include "BenchSupport.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

namespace {

// Milliseconds from starting `program` to its first frame; -1 when it never showed one.
double millisecondsToFirstFrame(const QString& program, const QProcessEnvironment& environment) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProgram(program);
    process.setStandardOutputFile(QProcess::nullDevice());
    QElapsedTimer timer;
    double shown = -1;
    QByteArray log;
    QObject::connect(&process, &QProcess::readyReadStandardError, [&] {
        log += process.readAllStandardError();
        if (shown < 0 && log.contains("Frame rendered"))
            shown = double(timer.nsecsElapsed()) / 1e6;
    });
    timer.start();
    process.start();
    while (shown < 0 && process.state() != QProcess::NotRunning && timer.elapsed() < 30000)
        process.waitForReadyRead(100);
    process.terminate();
    if (!process.waitForFinished(10000))
        process.kill();
    process.waitForFinished();
    if (shown < 0)
        std::fprintf(stderr, "%s showed no frame:\n%s\n", qPrintable(program), log.constData());
    return shown;
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::atoi(argv[1]) : 15;
    const QString bin = QCoreApplication::applicationDirPath();

    QTemporaryDir home, runtime;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", home.path());
    environment.insert("XDG_RUNTIME_DIR", runtime.path());
    for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
        environment.remove(name);
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("QT_QUICK_BACKEND", "software");
    environment.insert("QT_LOGGING_RULES", "qt.scenegraph.time.renderloop.debug=true");

    std::printf("\n## Start-up: first frame of a new process (median of %d runs)\n\n", runs);
    std::printf("| start | Morvanta ms | minimal Qt Quick window ms | ratio |\n|---|---:|---:|---:|\n");
    for (const bool withVault : {false, true}) {
        if (withVault) {
            // Made by the shipped tool with the shipped key derivation, then locked.
            qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
            VaultManager vault(home.filePath(".local/share/Morvanta"));
            vault.createVault(QStringLiteral("bench"));
        }
        QList<double> morvanta, minimal;
        for (int i = 0; i < runs; ++i) {
            morvanta.append(millisecondsToFirstFrame(bin + "/morvanta", environment));
            minimal.append(millisecondsToFirstFrame(bin + "/startup_minimal", environment));
        }
        const double m = bench::median(morvanta), q = bench::median(minimal);
        std::printf("| %s | %.0f | %.0f | %.2f |\n",
                    withVault ? "a locked vault (lock screen)" : "first run (welcome pages)", m, q,
                    q > 0 ? m / q : 0.0);
    }
    return 0;
}
