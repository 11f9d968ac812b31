#include "TableKeyboard.h"

#include <QGuiApplication>
#include <QStyleHints>

#include <algorithm>

TableKeyboard::TableKeyboard(QObject* parent) : QObject(parent) {}

void TableKeyboard::setModel(ItemTableModel* model) {
    if (model == m_model)
        return;
    m_model = model;
    m_typed.clear();
    emit modelChanged();
}

int TableKeyboard::rowAfterKey(int key, int row, int pageRows) const {
    const int count = m_model ? m_model->rowCount() : 0;
    if (count == 0)
        return -1;
    const int page = std::max(1, pageRows);
    int target = -1;
    switch (key) {
    case Qt::Key_Up:
        target = row - 1;
        break;
    case Qt::Key_Down:
        target = row + 1;
        break;
    case Qt::Key_PageUp:
        target = row - page;
        break;
    case Qt::Key_PageDown:
        target = row + page;
        break;
    case Qt::Key_Home:
        target = 0;
        break;
    case Qt::Key_End:
        target = count - 1;
        break;
    default:
        return -1;
    }
    // Nothing selected yet: any movement starts at the top.
    if (row < 0 && key != Qt::Key_End)
        return 0;
    return std::clamp(target, 0, count - 1);
}

QString TableKeyboard::commandForKey(int key, int modifiers) {
    const auto mods = Qt::KeyboardModifiers(modifiers) & ~Qt::KeypadModifier;
    if (key == Qt::Key_F10 && mods == Qt::ShiftModifier)
        return QStringLiteral("menu");
    if (mods != Qt::NoModifier)
        return {};
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return QStringLiteral("open");
    case Qt::Key_F2:
        return QStringLiteral("rename");
    case Qt::Key_Delete:
        return QStringLiteral("delete");
    case Qt::Key_Menu:
        return QStringLiteral("menu");
    }
    return {};
}

int TableKeyboard::rowForTyped(const QString& text, int row) {
    if (!m_model || text.isEmpty() || !text.at(0).isPrint() || text.at(0).isSpace())
        return -1;
    const int interval = QGuiApplication::styleHints()->keyboardInputInterval();
    // A selection moved by anything else since starts a new search.
    const bool goesOn = m_sinceTyped.isValid() && m_sinceTyped.elapsed() < interval &&
                        row == m_lastFound;
    m_sinceTyped.start();
    m_typed = goesOn ? m_typed + text : text;
    // "aaa" cycles through the names starting with "a" rather than looking for "aaa".
    const bool oneLetter = m_typed.count(m_typed.at(0), Qt::CaseInsensitive) == m_typed.size();
    // A longer prefix may still fit the name already selected.
    m_lastFound = oneLetter ? firstMatch(m_typed.left(1), row + 1)
                            : firstMatch(m_typed, std::max(row, 0));
    return m_lastFound;
}

int TableKeyboard::firstMatch(const QString& prefix, int from) const {
    const QList<VaultItem>& rows = m_model->rows();
    const int count = int(rows.size());
    for (int i = 0; i < count; ++i) {
        const int at = (from + i) % count;
        if (rows.at(at).name.startsWith(prefix, Qt::CaseInsensitive))
            return at;
    }
    return -1;
}
