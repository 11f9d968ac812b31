#include "DesktopTraces.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QtEndian>
#include <QSaveFile>
#include <QSettings>
#include <QUrl>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <zlib.h>

namespace platform {

namespace {

QString xdgFolder(const char* variable, const QString& fallback) {
    const QString value = qEnvironmentVariable(variable);
    return value.startsWith(QLatin1Char('/')) ? value : QDir::homePath() + fallback;
}

bool isBelow(const QString& uri, const QStringList& folders) {
    const QString path = QUrl(uri).toLocalFile();
    if (path.isEmpty())
        return false;
    for (const QString& folder : folders) {
        if (path == folder || path.startsWith(folder + QLatin1Char('/')))
            return true;
    }
    return false;
}

QByteArray inflate(const QByteArray& compressed) {
    QByteArray out;
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return out;
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed.constData()));
    stream.avail_in = uInt(compressed.size());
    char buffer[4096];
    int status = Z_OK;
    while (status == Z_OK && out.size() < 65536) {
        stream.next_out = reinterpret_cast<Bytef*>(buffer);
        stream.avail_out = sizeof buffer;
        status = ::inflate(&stream, Z_NO_FLUSH);
        out.append(buffer, qsizetype(sizeof buffer - stream.avail_out));
    }
    inflateEnd(&stream);
    return status == Z_STREAM_END ? out : QByteArray();
}

// The "Thumb::URI" text of a thumbnail PNG: the file it shows. Thumbnailers write it plain
// (tEXt), compressed (zTXt, as Qt does for longer texts) or international (iTXt).
QString thumbnailUri(const QString& pngPath) {
    static const QByteArray key("Thumb::URI\0", 11);
    QFile file(pngPath);
    if (!file.open(QIODevice::ReadOnly) || file.read(8) != QByteArray("\x89PNG\r\n\x1a\n", 8))
        return {};
    for (;;) {
        const QByteArray header = file.read(8);
        if (header.size() < 8)
            return {};
        const quint32 length = qFromBigEndian<quint32>(header.constData());
        const QByteArray type = header.mid(4, 4);
        if (type == "IDAT" || type == "IEND" || length > (1u << 20))
            return {};
        const QByteArray data = file.read(length);
        file.skip(4); // CRC
        if (!data.startsWith(key))
            continue;
        const QByteArray rest = data.mid(key.size());
        if (type == "tEXt")
            return QString::fromLatin1(rest);
        if (type == "zTXt" && !rest.isEmpty())
            return QString::fromLatin1(inflate(rest.mid(1)));
        if (type == "iTXt" && rest.size() > 2) {
            // compressed?, method, language\0, translated keyword\0, text
            const bool compressed = rest[0] != 0;
            const qsizetype language = rest.indexOf('\0', 2);
            const qsizetype translated = rest.indexOf('\0', language + 1);
            if (language < 0 || translated < 0)
                return {};
            const QByteArray text = rest.mid(translated + 1);
            return QString::fromUtf8(compressed ? inflate(text) : text);
        }
    }
}

int forgetThumbnails(const QStringList& folders) {
    int removed = 0;
    QDirIterator it(xdgFolder("XDG_CACHE_HOME", QStringLiteral("/.cache")) +
                        QStringLiteral("/thumbnails"),
                    {QStringLiteral("*.png")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (isBelow(thumbnailUri(path), folders) && QFile::remove(path))
            ++removed;
    }
    return removed;
}

// Copies the bookmark list token by token, leaving out the bookmarks of the vault.
int forgetRecentlyUsed(const QStringList& folders) {
    const QString path = xdgFolder("XDG_DATA_HOME", QStringLiteral("/.local/share")) +
                         QStringLiteral("/recently-used.xbel");
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray original = in.readAll();
    in.close();

    QByteArray rewritten;
    QXmlStreamReader reader(original);
    QXmlStreamWriter writer(&rewritten);
    int removed = 0;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == QLatin1String("bookmark") &&
            isBelow(reader.attributes().value(QLatin1String("href")).toString(), folders)) {
            reader.skipCurrentElement();
            ++removed;
            continue;
        }
        if (reader.hasError())
            return 0; // not a list we understand: leave it alone
        writer.writeCurrentToken(reader);
    }
    if (removed == 0)
        return 0;
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(rewritten) != rewritten.size() || !out.commit())
        return 0;
    return removed;
}

int forgetRecentDocuments(const QStringList& folders) {
    int removed = 0;
    QDirIterator it(xdgFolder("XDG_DATA_HOME", QStringLiteral("/.local/share")) +
                        QStringLiteral("/RecentDocuments"),
                    {QStringLiteral("*.desktop")}, QDir::Files);
    while (it.hasNext()) {
        const QString path = it.next();
        const QSettings entry(path, QSettings::IniFormat);
        const QString url = entry.value(QStringLiteral("Desktop Entry/URL")).toString();
        if (isBelow(url.startsWith(QLatin1Char('/')) ? QUrl::fromLocalFile(url).toString() : url,
                    folders) &&
            QFile::remove(path))
            ++removed;
    }
    return removed;
}

} // namespace

int forgetTracesBelow(const QStringList& folders) {
    if (folders.isEmpty())
        return 0;
    return forgetThumbnails(folders) + forgetRecentlyUsed(folders) + forgetRecentDocuments(folders);
}

} // namespace platform
