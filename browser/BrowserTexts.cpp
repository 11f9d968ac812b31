#include "BrowserTexts.h"

#include "contents/VaultItem.h"

#include <QCoreApplication>
#include <QKeySequence>
#include <QRegularExpression>

namespace {

const QString kNone = QStringLiteral("\u2014");

// The locale's long date without the weekday and with the month abbreviated: the medium
// form that Qt's locale data does not name.
QString mediumDateFormat(const QLocale& locale) {
    QString format = locale.dateFormat(QLocale::LongFormat);
    static const QRegularExpression weekday(QStringLiteral("d{4}[,.]?\\s*"));
    format.remove(weekday);
    format.replace(QStringLiteral("MMMM"), QStringLiteral("MMM"));
    return format.trimmed();
}

// The locale's short time, to the minute.
QString shortTimeFormat(const QLocale& locale) {
    QString format = locale.timeFormat(QLocale::ShortFormat);
    static const QRegularExpression seconds(QStringLiteral("[:.]ss?"));
    format.remove(seconds);
    return format;
}

} // namespace

QString idleText(double idleTimeoutSeconds) {
    // Zero or less is off for the idle timer too.
    if (!(idleTimeoutSeconds > 0.0))
        return QCoreApplication::translate("BrowserTexts", "Auto-lock: off");
    return QCoreApplication::translate("BrowserTexts", "Auto-lock: %1m")
        .arg(qint64(idleTimeoutSeconds / 60.0));
}

QString itemCountText(qsizetype count) {
    return count == 1 ? QCoreApplication::translate("BrowserTexts", "1 item")
                      : QCoreApplication::translate("BrowserTexts", "%1 items").arg(count);
}

QString byteCountText(std::optional<qint64> size, const QLocale& locale) {
    if (!size)
        return kNone;
    QString text = locale.formattedDataSize(*size, 1, QLocale::DataSizeSIFormat);
    // Qt's unit for small counts has no singular.
    if (*size == 1 && text.endsWith(QStringLiteral(" bytes")))
        text.chop(1);
    return text;
}

QString progressText(const WorkProgress& progress, const QLocale& locale) {
    // Each step fills all of its places at once, so a % in the item's name stays as it is.
    QString text = QCoreApplication::translate("BrowserTexts", "\u201C%1\u201D").arg(progress.name);
    if (progress.bytesTotal > 0) {
        text = QCoreApplication::translate("BrowserTexts", "%1 \u2014 %2 of %3")
                   .arg(text, byteCountText(qint64(progress.bytesDone), locale),
                        byteCountText(qint64(progress.bytesTotal), locale));
    } else if (progress.fraction >= 0) {
        text = QCoreApplication::translate("BrowserTexts", "%1 \u2014 %2%")
                   .arg(text, QString::number(qRound(progress.fraction * 100)));
    }
    if (progress.filesTotal > 1) {
        text = QCoreApplication::translate("BrowserTexts", "%1, %2 of %3 items")
                   .arg(text, QString::number(progress.filesDone),
                        QString::number(progress.filesTotal));
    }
    return text;
}

QString dateText(const std::optional<QDateTime>& date, const QLocale& locale) {
    if (!date || !date->isValid())
        return kNone;
    const QDateTime local = date->toLocalTime();
    return locale.toString(local.date(), mediumDateFormat(locale)) + QStringLiteral(", ") +
           locale.toString(local.time(), shortTimeFormat(locale));
}

QString renamePrefill(const QUrl& url) {
    const QString name = url.fileName();
    return pathExtension(name).isEmpty() ? name : deletingPathExtension(name);
}

QString renameMessage(const QUrl& url) {
    const QString extension = pathExtension(url.fileName());
    if (extension.isEmpty())
        return QCoreApplication::translate("BrowserTexts", "Enter a new name for this item.");
    return QCoreApplication::translate("BrowserTexts",
                                       "Enter a new name. The \u201C.%1\u201D extension is kept so "
                                       "the item still opens correctly.")
        .arg(extension);
}

QString restoreMessage(const QString& name, const std::optional<QString>& folder) {
    return QCoreApplication::translate(
               "BrowserTexts", "\u201C%1\u201D will be moved out of the vault back to:\n\n%2/%1")
        .arg(name,
             folder.value_or(QCoreApplication::translate("BrowserTexts", "its original location")));
}

QString deleteMessage(const QString& name) {
    return QCoreApplication::translate("BrowserTexts",
                                       "The vault holds the only copy of \u201C%1\u201D \u2014 "
                                       "deleting it erases it from your computer "
                                       "entirely. This can\u2019t be undone.")
        .arg(name);
}

QString lockHelpText() {
    return QCoreApplication::translate("BrowserTexts", "Lock vault (%1)")
        .arg(QKeySequence(QStringLiteral("Ctrl+L")).toString(QKeySequence::NativeText));
}
