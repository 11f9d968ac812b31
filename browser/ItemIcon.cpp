#include "ItemIcon.h"

#include "lockscreens/SymbolIcon.h"
#include "platform/Workspace.h"

#include <QFileInfo>
#include <QPainter>
#include <QQuickWindow>

ItemIcon::ItemIcon(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void ItemIcon::setPath(const QString& path) {
    if (path == m_path)
        return;
    m_path = path;
    m_icon = path.isEmpty() ? QIcon() : platform::Workspace::iconFor(path);
    m_isFolder = !path.isEmpty() && QFileInfo(path).isDir();
    emit pathChanged();
    update();
}

void ItemIcon::setFallbackColor(const QColor& color) {
    if (color == m_fallbackColor)
        return;
    m_fallbackColor = color;
    emit fallbackColorChanged();
    update();
}

void ItemIcon::paint(QPainter* painter) {
    const QRectF frame = boundingRect();
    if (m_path.isEmpty() || frame.isEmpty())
        return;
    if (!m_icon.isNull()) {
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        m_icon.paint(painter, frame.toAlignedRect());
        return;
    }
    const qreal dpr = window() ? window()->effectiveDevicePixelRatio() : 1.0;
    const QImage symbol =
        SymbolIcon::render(m_isFolder ? QStringLiteral("folder") : QStringLiteral("doc"), m_fallbackColor, (frame.size() * dpr).toSize());
    painter->drawImage(frame, symbol);
}
