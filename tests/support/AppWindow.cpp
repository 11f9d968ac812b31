#include "AppWindow.h"

#include "Accessibility.h"

#include "app/AccessibleControls.h"
#include "app/AppIdentity.h"
#include "app/AppPalette.h"

#include <QAccessible>
#include <QDir>
#include <QMetaObject>
#include <QPainter>
#include <QRegularExpression>
#include <QSettings>
#include <QTest>

namespace testsupport {

namespace {

void collectTexts(QQuickItem* item, QStringList& texts) {
    if (!item->isVisible() || item->opacity() == 0)
        return;
    const QVariant text = item->property("text");
    if (text.isValid() && !text.toString().isEmpty())
        texts.append(text.toString());
    const QVariant placeholder = item->property("placeholderText");
    if (placeholder.isValid() && !placeholder.toString().isEmpty())
        texts.append(placeholder.toString());
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
    applyAppPalette();
    auto store =
        std::make_unique<QSettings>(m_settingsDir.filePath("Morvanta.conf"), QSettings::IniFormat);
    store->setValue("disguiseMode", disguiseMode);
    m_settings = std::make_unique<platform::Settings>(std::move(store));
    const QString pseudo = qEnvironmentVariable("MORVANTA_PSEUDO_TRANSLATION");
    if (!pseudo.isEmpty() &&
        !(m_pseudo.load(pseudo) && QCoreApplication::installTranslator(&m_pseudo)))
        qFatal("No pseudo-translation at %s", qPrintable(pseudo));
    installAccessibility();
    followDisguise(*m_settings);
    m_vault = std::make_unique<VaultManager>(m_support.path(), std::move(runner));
    m_engine = std::make_unique<QQmlApplicationEngine>();
    m_engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    m_engine->setInitialProperties(
        {{"vault", QVariant::fromValue(m_vault.get())},
         {"settings", QVariant::fromValue(m_settings.get())},
         {"panels", QVariant::fromValue<platform::Panels*>(m_panels.get())},
         {"workspace", QVariant::fromValue<platform::Workspace*>(m_workspace.get())}});
    m_engine->load(QUrl(QStringLiteral("qrc:/qt/qml/Morvanta/Main.qml")));
    if (m_engine->rootObjects().size() != 1)
        qFatal("The main window did not load");
    m_window = qobject_cast<QQuickWindow*>(m_engine->rootObjects().first());
    if (!QTest::qWaitForWindowExposed(m_window))
        qFatal("The main window was not shown");
    m_window->requestActivate();
    if (!QTest::qWaitForWindowActive(m_window))
        qFatal("The main window did not become active");
}

AppWindow::~AppWindow() {
    m_engine.reset();
    // Whatever a test left open is detached before its folders go.
    if (m_vault->isUnlocked()) {
        try {
            m_vault->lock();
        } catch (const VaultError&) {
        }
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

QString AppWindow::screenName() const {
    QObject* shown = screen();
    return shown ? qmlTypeName(shown) : QString();
}

QStringList AppWindow::visibleTexts() const {
    QStringList texts;
    collectTexts(m_window->contentItem(), texts);
    return texts;
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

} // namespace testsupport
