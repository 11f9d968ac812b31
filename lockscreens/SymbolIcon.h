#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

// One named symbol ("lock.fill", "arrow.right", …) drawn from the app's own vector icons in
// one colour, or the app icon itself ("AppIcon") in its own colours. Drawn in C++ so it
// looks the same with every scene-graph backend, the software one included.
class SymbolIcon : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(int shadowRadius READ shadowRadius WRITE setShadowRadius NOTIFY shadowRadiusChanged)

public:
    explicit SymbolIcon(QQuickItem* parent = nullptr);

    QString name() const { return m_name; }
    void setName(const QString& name);
    QColor color() const { return m_color; }
    void setColor(const QColor& color);
    // A soft shadow below the symbol, drawn inside this margin around it.
    int shadowRadius() const { return m_shadowRadius; }
    void setShadowRadius(int radius);

    void paint(QPainter* painter) override;

    // The vector file of a symbol, or empty for a name the app does not know.
    static QString resourceFor(const QString& name);
    static QStringList knownNames();
    // The symbol drawn at `size` device pixels; a null image for an unknown name.
    static QImage render(const QString& name, const QColor& color, QSize size);

signals:
    void nameChanged();
    void colorChanged();
    void shadowRadiusChanged();

private:
    QString m_name;
    QColor m_color = Qt::white;
    int m_shadowRadius = 0;
};
