#include "AppPalette.h"

#include <QGuiApplication>
#include <QPalette>

void applyAppPalette() {
    QPalette palette;
    const QColor window(0x1f, 0x1f, 0x23);
    const QColor text(0xec, 0xec, 0xf1);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, QColor(0x2a, 0x2a, 0x2f));
    palette.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x2b));
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::PlaceholderText, QColor(0x8c, 0x8c, 0x96));
    palette.setColor(QPalette::Button, QColor(0x33, 0x33, 0x39));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Mid, QColor(0x4a, 0x4a, 0x52));
    palette.setColor(QPalette::Dark, QColor(0x14, 0x14, 0x17));
    palette.setColor(QPalette::Highlight, QColor(0x3b, 0x7d, 0xdd));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, window);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor(0x70, 0x70, 0x78));
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x70, 0x70, 0x78));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x70, 0x70, 0x78));
    QGuiApplication::setPalette(palette);
}
