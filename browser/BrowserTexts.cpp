#include "BrowserTexts.h"

#include "contents/VaultItem.h"

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
        return QStringLiteral("Auto-lock: off");
    return QStringLiteral("Auto-lock: %1m").arg(qint64(idleTimeoutSeconds / 60.0));
}

QString itemCountText(qsizetype count) {
    return QStringLiteral("%1 item%2").arg(count).arg(count == 1 ? QString() : QStringLiteral("s"));
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
    QString text = QStringLiteral("\u201C%1\u201D").arg(progress.name);
    if (progress.bytesTotal > 0) {
        text += QStringLiteral(" \u2014 %1 of %2")
                    .arg(byteCountText(qint64(progress.bytesDone), locale),
                         byteCountText(qint64(progress.bytesTotal), locale));
    }
    else if (progress.fraction >= 0)
        text += QStringLiteral(" \u2014 %1%").arg(qRound(progress.fraction * 100));
    if (progress.filesTotal > 1)
        text += QStringLiteral(", %1 of %2 items").arg(progress.filesDone).arg(progress.filesTotal);
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
        return QStringLiteral("Enter a new name for this item.");
    return QStringLiteral("Enter a new name. The \u201C.") + extension +
           QStringLiteral("\u201D extension is kept so the item still opens correctly.");
}

QString restoreMessage(const QString& name, const std::optional<QString>& folder) {
    return QStringLiteral("\u201C") + name +
           QStringLiteral("\u201D will be moved out of the vault back to:\n\n") +
           folder.value_or(QStringLiteral("its original location")) + QLatin1Char('/') + name;
}

QString deleteMessage(const QString& name) {
    return QStringLiteral("The vault holds the only copy of \u201C") + name +
           QStringLiteral("\u201D \u2014 deleting it erases it from your computer entirely. "
                          "This can\u2019t be undone.");
}

QString lockHelpText() {
    return QStringLiteral("Lock vault (%1)")
        .arg(QKeySequence(QStringLiteral("Ctrl+L")).toString(QKeySequence::NativeText));
}
