#pragma once

#include <QColor>
#include <QIcon>
#include <QQuickPaintedItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

// The desktop's icon for a file or folder, as its file manager shows it; the app's own
// folder or document symbol when the icon theme has none for it.
class ItemIcon : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString path READ path WRITE setPath NOTIFY pathChanged)
    Q_PROPERTY(
        QColor fallbackColor READ fallbackColor WRITE setFallbackColor NOTIFY fallbackColorChanged)
    Q_PROPERTY(bool fromTheme READ fromTheme NOTIFY pathChanged)

public:
    explicit ItemIcon(QQuickItem* parent = nullptr);

    QString path() const { return m_path; }
    void setPath(const QString& path);
    QColor fallbackColor() const { return m_fallbackColor; }
    void setFallbackColor(const QColor& color);
    // Whether the icon theme had an icon for the item.
    bool fromTheme() const { return !m_icon.isNull(); }

    void paint(QPainter* painter) override;

signals:
    void pathChanged();
    void fallbackColorChanged();

private:
    QString m_path;
    QIcon m_icon;
    bool m_isFolder = false;
    QColor m_fallbackColor = Qt::white;
};
