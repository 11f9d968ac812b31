#include "Panels.h"

#include "ToolLocation.h"

#include <QBuffer>
#include <QEvent>
#include <QGuiApplication>
#include <QPointer>
#include <QPixmap>
#include <QProcess>
#include <QTimer>
#include <QWindow>

namespace platform {

namespace {

bool isInput(QEvent::Type type) {
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove: // hover, and the tooltips it brings
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::ContextMenu:
        return true;
    default:
        return false;
    }
}

} // namespace

Panels::Panels(QObject* parent) : QObject(parent) {}

void Panels::openPanel(const OpenPanelOptions& options, QObject* owner, OpenAnswer answered) {
    run({options}, owner, [answered](const QStringList& chosen) {
        QList<QUrl> urls;
        for (const QString& path : chosen)
            urls.append(QUrl::fromLocalFile(path));
        answered(urls.isEmpty() ? std::nullopt : std::optional(urls));
    });
}

void Panels::savePanel(const SavePanelOptions& options, QObject* owner, SaveAnswer answered) {
    run({options}, owner, [answered](const QStringList& chosen) {
        answered(chosen.isEmpty() ? std::nullopt : std::optional(QUrl::fromLocalFile(chosen.first())));
    });
}

void Panels::run(PanelRequest request, QObject* owner,
                 std::function<void(const QStringList& chosen)> answered) {
    // Only X names its windows across processes; elsewhere the panel stands on its own.
    const QPointer<QWindow> over = QGuiApplication::focusWindow();
    if (over && QGuiApplication::platformName() == QLatin1String("xcb"))
        request.parentWindow = over->winId();
    request.applicationName = QGuiApplication::applicationName();
    request.desktopFileName = QGuiApplication::desktopFileName();
    QBuffer icon(&request.iconPng);
    icon.open(QIODevice::WriteOnly);
    QGuiApplication::windowIcon().pixmap(QSize(64, 64)).save(&icon, "PNG");

    auto* panel = new QProcess(this);
    panel->setProgram(QString::fromStdString(helperProgramPath("morvanta-panel")));
    panel->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    if (m_open.isEmpty())
        QCoreApplication::instance()->installEventFilter(this);
    m_open.append(panel);

    // The answer goes to the owner only while it lives: its going releases the panel first.
    const auto finish = [this, panel, over, answered](const QStringList& chosen) {
        const bool answering = release(panel);
        panel->deleteLater();
        if (!answering)
            return;
        if (over)
            over->requestActivate();
        answered(chosen);
    };
    connect(panel, &QProcess::finished, this, [panel, finish](int code, QProcess::ExitStatus status) {
        const bool chose = status == QProcess::NormalExit && code == 0;
        finish(chose ? decodePanelAnswer(panel->readAllStandardOutput()) : QStringList());
    });
    connect(panel, &QProcess::errorOccurred, this, [panel, finish](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        qWarning("Morvanta could not start its file panel program %s: %s",
                 qPrintable(panel->program()), qPrintable(panel->errorString()));
        finish({});
    });
    // The end of its input closes the panel; one that hangs on is ended.
    connect(owner, &QObject::destroyed, panel, [this, panel] {
        release(panel);
        panel->closeWriteChannel();
        QTimer::singleShot(2000, panel, &QProcess::kill);
    });
    panel->start();
    panel->write(encodePanelRequest(request));
}

bool Panels::release(QProcess* panel) {
    if (m_open.removeAll(panel) == 0)
        return false;
    if (m_open.isEmpty())
        QCoreApplication::instance()->removeEventFilter(this);
    return true;
}

bool Panels::eventFilter(QObject* watched, QEvent* event) {
    if (m_open.isEmpty() || !isInput(event->type()))
        return QObject::eventFilter(watched, event);
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin)
        m_open.last()->write("raise\n");
    return true;
}

} // namespace platform
