// morvanta-panel: one file dialog for the window, in a process of its own. It reads its
// request as one line on its standard input and answers on its standard output (see
// platform/PanelRequest.h), exiting 0 when something was chosen and 1 when not. A later
// line "raise" brings the dialog forward; the end of the input, as when Morvanta locks or
// goes, closes it unanswered.

#include "AppPalette.h"
#include "Translation.h"
#include "WornIdentity.h"
#include "platform/panel/PanelDialog.h"

#include <QApplication>
#include <QFileDialog>
#include <QIcon>
#include <QPixmap>
#include <QPointer>
#include <QSocketNotifier>

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace {

// Appends what the input has ready, blocking until something is; false at its end.
bool readInput(QByteArray& buffer) {
    char chunk[4096];
    const ssize_t got = ::read(STDIN_FILENO, chunk, sizeof chunk);
    if (got > 0)
        buffer.append(chunk, got);
    return got > 0 || (got < 0 && errno == EINTR);
}

} // namespace

int main(int argc, char* argv[]) {
    platform::preferPortalFileDialogs();
    QApplication app(argc, argv);
    installTranslation();
    applyAppPalette();

    QByteArray input;
    while (!input.contains('\n') && readInput(input)) {
    }
    const qsizetype end = input.indexOf('\n');
    const auto request = platform::decodePanelRequest(input.left(end));
    if (end < 0 || !request) {
        std::fputs("morvanta-panel: expected a panel request on the standard input\n", stderr);
        return 2;
    }
    input.remove(0, end + 1);

    // The window's own name and icon, before the dialog's window exists.
    QPixmap icon;
    icon.loadFromData(request->iconPng, "PNG");
    wearIdentity(request->applicationName, request->desktopFileName, QIcon(icon));

    const QPointer<QFileDialog> dialog =
        platform::showPanelDialog(*request, [](const QStringList& chosen) {
            const QByteArray answer = platform::encodePanelAnswer(chosen);
            std::fwrite(answer.constData(), 1, size_t(answer.size()), stdout);
            std::fflush(stdout);
            QCoreApplication::exit(chosen.isEmpty() ? 1 : 0);
        });
    const auto obey = [&] {
        for (qsizetype at; (at = input.indexOf('\n')) >= 0; input.remove(0, at + 1)) {
            if (input.left(at) == "raise" && dialog) {
                dialog->raise();
                dialog->activateWindow();
            }
        }
    };
    obey();
    QSocketNotifier commands(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&commands, &QSocketNotifier::activated, &app, [&] {
        if (readInput(input))
            obey();
        else
            QCoreApplication::exit(1);
    });
    return app.exec();
}
