#include "AppWindow.h"

#include "Accessibility.h"

#include "app/MainWindow.h"
#include "support/Trees.h"

#include <QAccessible>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPainter>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QtQml/QQmlExtensionPlugin>

// The screens' modules, linked in statically.
Q_IMPORT_QML_PLUGIN(MorvantaPlugin)
Q_IMPORT_QML_PLUGIN(Morvanta_LockScreensPlugin)
Q_IMPORT_QML_PLUGIN(Morvanta_BrowserPlugin)

namespace testsupport {

namespace {

void collectTexts(QQuickItem* item, QStringList& texts) {
    if (!item->isVisible() || item->opacity() == 0)
        return;
    for (const char* property : {"text", "placeholderText"}) {
        if (const QString text = item->property(property).toString(); !text.isEmpty())
            texts.append(text);
    }
    for (QQuickItem* child : item->childItems())
        collectTexts(child, texts);
}

// Through the visual tree: items a Loader made are not QObject children of the window.
QQuickItem* findItem(QQuickItem* item, const QString& objectName) {
    if (item->objectName() == objectName)
        return item;
    for (QQuickItem* child : item->childItems()) {
        if (QQuickItem* found = findItem(child, objectName))
            return found;
    }
    return nullptr;
}

} // namespace

QString qmlTypeName(const QObject* object) {
    QString name = QString::fromLatin1(object->metaObject()->className());
    const qsizetype cut = name.indexOf(QLatin1String("_QML"));
    return cut < 0 ? name : name.left(cut);
}

AppWindow::AppWindow(HDIUtilRunner runner, const QString& disguiseMode) {
    auto store =
        std::make_unique<QSettings>(m_settingsDir.filePath("Morvanta.conf"), QSettings::IniFormat);
    store->setValue("disguiseMode", disguiseMode);
    m_settings = std::make_unique<platform::Settings>(std::move(store));
    const QString pseudo = qEnvironmentVariable("MORVANTA_PSEUDO_TRANSLATION");
    if (!pseudo.isEmpty() &&
        !(m_pseudo.load(pseudo) && QCoreApplication::installTranslator(&m_pseudo)))
        qFatal("No pseudo-translation at %s", qPrintable(pseudo));
    m_vault = std::make_unique<VaultManager>(m_support.path(), std::move(runner));
    m_engine = std::make_unique<QQmlApplicationEngine>();
    m_window = loadMainWindow(*m_engine, *m_vault, *m_settings, *m_panels, *m_workspace);
    if (!m_window)
        qFatal("The main window did not load");
    if (!QTest::qWaitForWindowExposed(m_window))
        qFatal("The main window was not shown");
    m_window->requestActivate();
    if (!QTest::qWaitForWindowActive(m_window))
        qFatal("The main window did not become active");
}

AppWindow::~AppWindow() {
    m_engine.reset();
    // Whatever a test left open is detached before its folders go.
    try {
        if (m_vault->isUnlocked())
            m_vault->lock();
    } catch (const VaultError&) {
    }
}

QQuickItem* AppWindow::find(const QString& objectName) const {
    return findItem(m_window->contentItem(), objectName);
}

QQuickItem* AppWindow::item(const QString& objectName) const {
    QQuickItem* found = find(objectName);
    if (!found)
        qWarning("No item named %s on the %s screen", qPrintable(objectName),
                 qPrintable(screenName()));
    return found;
}

QObject* AppWindow::screen() const {
    QQuickItem* loader = find(QStringLiteral("screenLoader"));
    QObject* screen = loader ? loader->property("item").value<QObject*>() : nullptr;
    if (screen && qmlTypeName(screen) == QLatin1String("UnlockView")) {
        QQuickItem* inner = findItem(qobject_cast<QQuickItem*>(screen), "lockScreenLoader");
        return inner ? inner->property("item").value<QObject*>() : nullptr;
    }
    return screen;
}

QStringList AppWindow::visibleTexts() const {
    QStringList texts;
    collectTexts(m_window->contentItem(), texts);
    return texts;
}

QString AppWindow::text(const QString& objectName) const {
    QQuickItem* found = item(objectName);
    return found ? found->property("text").toString() : QStringLiteral("<missing>");
}

bool AppWindow::shown(const QString& objectName) const {
    QObject* popup = screen() ? screen()->findChild<QObject*>(objectName) : nullptr;
    if (popup && !qobject_cast<QQuickItem*>(popup))
        return popup->property("visible").toBool();
    QQuickItem* found = find(objectName);
    return found && found->isVisible();
}

void AppWindow::click(const QString& objectName) const {
    QQuickItem* target = item(objectName);
    if (!target)
        return;
    const QPointF centre = target->mapToScene(QPointF(target->width() / 2, target->height() / 2));
    QTest::mouseClick(m_window, Qt::LeftButton, {}, centre.toPoint());
}

void AppWindow::typeInto(const QString& objectName, const QString& text) const {
    QQuickItem* field = item(objectName);
    if (!field)
        return;
    field->forceActiveFocus();
    field->setProperty("text", QString());
    type(text);
}

void AppWindow::type(const QString& text) const {
    for (QChar c : text)
        QTest::keyClick(m_window, c.toLatin1());
}

void AppWindow::keys(const QList<Qt::Key>& keys, Qt::KeyboardModifiers modifiers) const {
    for (Qt::Key key : keys)
        QTest::keyClick(m_window, key, modifiers);
}

void AppWindow::tabTo(const QString& objectName) const {
    QQuickItem* target = item(objectName);
    for (int i = 0; i < 12 && target && !target->hasActiveFocus(); ++i)
        QTest::keyClick(m_window, Qt::Key_Tab);
    if (target && !target->hasActiveFocus())
        qWarning("Tab never reaches %s", qPrintable(objectName));
}

void AppWindow::drag(const QList<QUrl>& urls, bool drop) const {
    QMimeData data;
    data.setUrls(urls);
    const QPoint at(m_window->width() / 2, m_window->height() / 2);
    const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
    QDragEnterEvent enter(at, actions, &data, Qt::LeftButton, Qt::NoModifier);
    QDragMoveEvent move(at, actions, &data, Qt::LeftButton, Qt::NoModifier);
    QDropEvent dropped(at, actions, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_window, &enter);
    QCoreApplication::sendEvent(m_window, &move);
    if (drop)
        QCoreApplication::sendEvent(m_window, &dropped);
}

void AppWindow::choose(const QString& button, const QString& entry) const {
    click(button);
    if (!QTest::qWaitFor([&] { return shown(entry); }))
        qWarning("%s offers no %s", qPrintable(button), qPrintable(entry));
    waitForFrame();
    click(entry);
}

void AppWindow::waitForFrame() const {
    QSignalSpy swapped(m_window, &QQuickWindow::frameSwapped);
    m_window->update();
    if (!swapped.wait(2000))
        qWarning("No frame was drawn");
}

bool AppWindow::screenshot(const QString& name, bool withIcon) const {
    QString folder = QStringLiteral(MORVANTA_SCREENSHOT_DIR);
    if (!m_pseudo.isEmpty()) {
        folder += QStringLiteral("/pseudo");
        // Every text shown or named for screen readers wears the ⟦…⟧, but for the user's own
        // (the table's cells, paths) and what has no letters (a number).
        QAccessible::setActive(true);
        visitAccessible(m_window, [&name](QAccessibleInterface* element) {
            auto* item = qobject_cast<QQuickItem*>(element->object());
            for (QQuickItem* up = item; up; up = up->parentItem())
                if (qmlTypeName(up) == QLatin1String("TableCell"))
                    return;
            const QString text = element->text(QAccessible::Name);
            if (item && text.contains(QRegularExpression(QStringLiteral("\\p{L}"))) &&
                !text.startsWith(u'/') && !(text.startsWith(u'\u27E6') && text.endsWith(u'\u27E7')))
                qWarning("Untranslated text on %s: %s", qPrintable(name), qPrintable(text));
        });
    }
    QDir().mkpath(folder);
    QImage shot = m_window->grabWindow();
    if (withIcon) {
        QPainter painter(&shot);
        painter.drawPixmap(shot.width() - 56, 8, m_window->icon().pixmap(48));
    }
    return shot.save(folder + "/" + name + ".png");
}

VaultWindow::VaultWindow(const QString& password, HDIUtilRunner runner)
    : password(password), app(std::move(runner)) {
    app.vault().createVault(password);
    app.vault().unlock(password);
}

QUrl VaultWindow::file(const QString& relativePath, qint64 size) const {
    const QString path = home.filePath(relativePath);
    QDir().mkpath(QFileInfo(path).path());
    writeFile(path, QByteArray(size, 'm'));
    return QUrl::fromLocalFile(path);
}

QUrl VaultWindow::added(const QString& relativePath, qint64 size) {
    const QUrl source = file(relativePath, size);
    app.vault().addItem(source);
    return inVault(source.fileName());
}

QStringList VaultWindow::rowNames() const {
    QStringList names;
    for (const VaultItem& item : table()->rows())
        names.append(item.name);
    return names;
}

void VaultWindow::waitIdle() const {
    if (!QTest::qWaitFor([this] { return !browser()->busy(); }))
        qWarning("The browser stays busy");
}

} // namespace testsupport
