#include "SymbolIcon.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QQuickWindow>
#include <QSvgRenderer>

#include <algorithm>
#include <vector>

namespace {

// Symbol names as the screens use them, to the icons drawn for this app.
const QHash<QString, QString>& symbolTable() {
    static const QHash<QString, QString> table = [] {
        QHash<QString, QString> t;
        for (const char* name :
             {"lock.fill", "lock.open.fill", "lock.shield.fill", "exclamationmark.triangle.fill",
              "exclamationmark.circle.fill", "checkmark.circle.fill", "xmark.circle.fill",
              "shield.lefthalf.filled", "eye.slash.fill", "command", "bolt.fill", "wifi.slash",
              "key.fill", "externaldrive.fill.badge.checkmark", "arrow.left", "arrow.right",
              // the vault browser's
              "doc", "plus.circle.fill", "ellipsis.circle.fill", "info.circle", "gearshape.fill",
              "xmark", "checkmark.seal.fill", "timer", "doc.on.doc", "externaldrive.fill",
              "lock.shield", "folder", "pencil", "arrow.uturn.backward", "arrow.up.doc", "trash",
              "checkmark", "chevron.up", "chevron.down"}) {
            t.insert(QString::fromLatin1(name),
                     QStringLiteral(":/qt/qml/Morvanta/LockScreens/symbols/%1.svg")
                         .arg(QLatin1String(name)));
        }
        t.insert(QStringLiteral("AppIcon"),
                 QStringLiteral(":/qt/qml/Morvanta/LockScreens/morvanta.svg"));
        return t;
    }();
    return table;
}

// Three box blurs come close to a Gaussian; only the alpha channel matters for a shadow.
// Walks the pixels through one pointer: the image is not touched through its API per pixel.
void blurAlpha(QImage& image, int radius) {
    if (radius <= 0)
        return;
    const int w = image.width();
    const int h = image.height();
    uchar* const alpha = image.bits() + 3; // premultiplied ARGB32, alpha in the top byte
    const qsizetype stride = image.bytesPerLine();
    std::vector<int> line(qMax(w, h));
    for (int pass = 0; pass < 3; ++pass) {
        for (const bool horizontal : {false, true}) {
            const int outer = horizontal ? h : w;
            const int inner = horizontal ? w : h;
            const qsizetype step = horizontal ? 4 : stride;
            for (int o = 0; o < outer; ++o) {
                uchar* const first = alpha + (horizontal ? o * stride : o * 4);
                for (int i = 0; i < inner; ++i)
                    line[i] = first[i * step];
                int sum = 0;
                for (int i = -radius; i <= radius; ++i)
                    sum += line[qBound(0, i, inner - 1)];
                for (int i = 0; i < inner; ++i) {
                    first[i * step] = uchar(sum / (2 * radius + 1));
                    sum += line[qMin(i + radius + 1, inner - 1)] - line[qMax(i - radius, 0)];
                }
            }
        }
    }
}

} // namespace

SymbolIcon::SymbolIcon(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void SymbolIcon::setName(const QString& name) {
    if (name == m_name)
        return;
    m_name = name;
    if (!name.isEmpty() && resourceFor(name).isEmpty())
        qWarning("SymbolIcon: no symbol named \"%s\"", qPrintable(name));
    emit nameChanged();
    update();
}

void SymbolIcon::setColor(const QColor& color) {
    if (color == m_color)
        return;
    m_color = color;
    emit colorChanged();
    update();
}

void SymbolIcon::setShadowRadius(int radius) {
    if (radius == m_shadowRadius)
        return;
    m_shadowRadius = radius;
    emit shadowRadiusChanged();
    update();
}

QString SymbolIcon::resourceFor(const QString& name) {
    return symbolTable().value(name);
}

QStringList SymbolIcon::knownNames() {
    return symbolTable().keys();
}

QImage SymbolIcon::render(const QString& name, const QColor& color, QSize size) {
    const QString path = resourceFor(name);
    QFile file(path);
    if (size.isEmpty() || path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    QByteArray svg = file.readAll();
    // The symbols are drawn in "currentColor"; the app icon keeps its own colours.
    svg.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    QSvgRenderer renderer(svg);
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(color.alphaF());
    renderer.render(&painter, QRectF(QPointF(0, 0), size));
    return image;
}

void SymbolIcon::paint(QPainter* painter) {
    const qreal dpr = window() ? window()->effectiveDevicePixelRatio() : 1.0;
    const QRectF frame =
        boundingRect().adjusted(m_shadowRadius, m_shadowRadius, -m_shadowRadius, -m_shadowRadius);
    const QSize pixels = (frame.size() * dpr).toSize();
    const QImage symbol = render(m_name, m_color, pixels);
    if (symbol.isNull())
        return;
    if (m_shadowRadius > 0) {
        const int margin = int(m_shadowRadius * dpr);
        QImage shadow(pixels + QSize(2 * margin, 2 * margin), QImage::Format_ARGB32_Premultiplied);
        shadow.fill(Qt::transparent);
        {
            QPainter p(&shadow);
            p.drawImage(margin, margin, symbol);
            p.setCompositionMode(QPainter::CompositionMode_SourceIn);
            p.fillRect(shadow.rect(), QColor(0, 0, 0, 150));
        }
        blurAlpha(shadow, qMax(1, margin / 3));
        // Premultiplied: after blurring alpha alone, the colour must be black again.
        for (int y = 0; y < shadow.height(); ++y) {
            auto* const row = reinterpret_cast<QRgb*>(shadow.scanLine(y));
            std::transform(row, row + shadow.width(), row,
                           [](QRgb pixel) { return qRgba(0, 0, 0, qAlpha(pixel)); });
        }
        painter->drawImage(boundingRect().translated(0, m_shadowRadius / 4.0), shadow);
    }
    painter->drawImage(frame, symbol);
}
