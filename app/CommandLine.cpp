#include "CommandLine.h"

#include "Translation.h"

#include "engine/VaultManager.h"
#include "platform/SingleInstance.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

namespace {

void printError(const QString& message) {
    std::fprintf(stderr, "morvanta: %s\n", qPrintable(message));
}

} // namespace

int runCommandLine(int argc, char* argv[]) {
    // No display needed: these run from a terminal, a script or a keyboard shortcut.
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("morvanta"));
    QCoreApplication::setApplicationVersion(QStringLiteral(MORVANTA_VERSION));
    installTranslation();
    if (argc == 1) {
        // Not Qt's own abort, several lines long, in a terminal that has no display.
        printError(QCoreApplication::translate(
            "CommandLine", "No display to open the window on: neither WAYLAND_DISPLAY nor "
                           "DISPLAY is set. See morvanta --help."));
        return 1;
    }

    QCommandLineParser parser;
    // `-lock` as X programs take it, not as the four letters l, o, c and k.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(QCoreApplication::translate(
        "CommandLine", "Morvanta keeps sensitive files, folders and apps in one "
                       "encrypted vault.\nStarted without options, it "
                       "opens its window (or brings forward the one "
                       "already open)."));
    // Qt's own help option would also offer --help-all, for options a window-less run lacks.
    const QCommandLineOption help(
        {QStringLiteral("h"), QStringLiteral("help")},
        QCoreApplication::translate("CommandLine", "Show these options and exit."));
    const QCommandLineOption version(
        {QStringLiteral("v"), QStringLiteral("version")},
        QCoreApplication::translate("CommandLine", "Show the version and exit."));
    parser.addOption(help);
    parser.addOption(version);
    const QCommandLineOption lock(
        QStringLiteral("lock"),
        QCoreApplication::translate("CommandLine",
                                    "Lock the vault of the running Morvanta and exit. Succeeds "
                                    "also when Morvanta is not running or the vault is "
                                    "locked already."));
    parser.addOption(lock);

    if (!parser.parse(QCoreApplication::arguments())) {
        // Qt's own words ("Unknown option 'x'."), in the form of the errors below.
        printError(QCoreApplication::translate("CommandLine", "%1 See morvanta --help.")
                       .arg(parser.errorText()));
        return 2;
    }
    if (!parser.positionalArguments().isEmpty()) {
        printError(QCoreApplication::translate("CommandLine",
                                               "Unexpected argument '%1'. See morvanta --help.")
                       .arg(parser.positionalArguments().constFirst()));
        return 2;
    }
    if (parser.isSet(help)) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        return 0;
    }
    if (parser.isSet(version)) {
        std::printf("morvanta %s\n", MORVANTA_VERSION);
        return 0;
    }
    if (!parser.isSet(lock)) {
        printError(
            QCoreApplication::translate("CommandLine", "Nothing to do. See morvanta --help."));
        return 2;
    }
    const platform::SingleInstance::LockAnswer answer = platform::SingleInstance::requestLock();
    if (answer.state == platform::SingleInstance::LockAnswer::State::failed) {
        printError(QCoreApplication::translate("CommandLine", "Could not lock the vault: %1")
                       .arg(answer.reason));
        return 1;
    }
    return 0;
}

bool windowCanShow() {
    for (const char* name : {"WAYLAND_DISPLAY", "WAYLAND_SOCKET", "DISPLAY", "QT_QPA_PLATFORM"}) {
        if (!qEnvironmentVariableIsEmpty(name))
            return true;
    }
    return false;
}

QString lockForCommandLine(VaultManager& vault) {
    try {
        vault.lock();
    } catch (const VaultError& error) {
        // Nothing mounted: locked already.
        if (error.kind() != VaultError::Case::notMounted)
            return error.errorDescription();
    }
    return {};
}
