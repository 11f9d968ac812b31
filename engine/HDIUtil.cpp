#include "HDIUtil.h"

#include "platform/Process.h"
#include "platform/ToolLocation.h"

#include <QFileInfo>
#include <QStringDecoder>
#include <QStringEncoder>

#include <plist/plist.h>

#include <algorithm>
#include <memory>

namespace {

std::optional<QByteArray> strictUtf8(const QString& text) {
    QStringEncoder encoder(QStringEncoder::Utf8);
    QByteArray bytes = encoder.encode(text);
    if (encoder.hasError()) {
        platform::wipe(bytes.data(), static_cast<std::size_t>(bytes.size()));
        return std::nullopt;
    }
    return bytes;
}

QString decodeOrEmpty(const std::string& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder.decode(QByteArrayView(bytes.data(), qsizetype(bytes.size())));
    return decoder.hasError() ? QString() : text;
}

using PlistPtr = std::unique_ptr<void, decltype(&plist_free)>;

// The tool's answers are a few hundred bytes. The parser recurses once per nesting level,
// so a hostile answer nested deeply enough would exhaust the stack: anything larger than
// this is not read at all.
constexpr qsizetype kMaxPlistBytes = 128 * 1024;

PlistPtr parsePlist(const QByteArray& bytes) {
    plist_t parsed = nullptr;
    if (!bytes.isEmpty() && bytes.size() <= kMaxPlistBytes)
        plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &parsed);
    return PlistPtr(parsed, &plist_free);
}

PlistPtr parsePlist(const QString& text) {
    return parsePlist(strictUtf8(text).value_or(QByteArray()));
}

std::optional<QString> stringValue(plist_t node) {
    if (!node || plist_get_node_type(node) != PLIST_STRING)
        return std::nullopt;
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return QString::fromUtf8(text, qsizetype(length));
}

bool isDictionary(plist_t node) { return node && plist_get_node_type(node) == PLIST_DICT; }
bool isArray(plist_t node) { return node && plist_get_node_type(node) == PLIST_ARRAY; }

// The first non-empty "mount-point" of a "system-entities" array whose entries are all
// dictionaries; partition and container entries carry none.
std::optional<QString> firstMountPoint(plist_t entities) {
    if (!isArray(entities))
        return std::nullopt;
    const uint32_t count = plist_array_get_size(entities);
    for (uint32_t i = 0; i < count; ++i) {
        if (!isDictionary(plist_array_get_item(entities, i)))
            return std::nullopt;
    }
    for (uint32_t i = 0; i < count; ++i) {
        const auto mountPoint =
            stringValue(plist_dict_get_item(plist_array_get_item(entities, i), "mount-point"));
        if (mountPoint && !mountPoint->isEmpty())
            return mountPoint;
    }
    return std::nullopt;
}

} // namespace

HDIUtilResult runHDIUtilProgram(const QString& program, const QStringList& args,
                                const std::optional<QString>& stdinText,
                                const HDIUtilOutputLine& onLine) {
    std::vector<std::string> argv;
    argv.reserve(std::size_t(args.size()));
    for (const QString& arg : args)
        argv.push_back(arg.toStdString());

    // Text that is not valid Unicode is not written at all; the pipe is still closed.
    std::optional<QByteArray> input;
    if (stdinText)
        input = strictUtf8(*stdinText).value_or(QByteArray());
    std::optional<std::string_view> inputBytes;
    if (input)
        inputBytes = std::string_view(input->constData(), std::size_t(input->size()));

    // Output split into lines as it arrives; a line cut by the end of a chunk waits for the rest.
    std::string partLine;
    platform::OutputChunks onOutput;
    if (onLine) {
        onOutput = [&](std::string_view chunk) {
            partLine.append(chunk);
            for (std::size_t end; (end = partLine.find('\n')) != std::string::npos;) {
                onLine(decodeOrEmpty(partLine.substr(0, end)));
                partLine.erase(0, end + 1);
            }
        };
    }
    platform::ProcessResult run = platform::runProcess(program.toStdString(), argv, inputBytes,
                                                       platform::OutputCapture::Pipes, {}, onOutput);
    if (input)
        platform::wipe(input->data(), std::size_t(input->size()));
    return {run.status, decodeOrEmpty(run.out), decodeOrEmpty(run.err)};
}

HDIUtilResult runHDIUtilProcess(const QStringList& args, const std::optional<QString>& stdinText,
                                const HDIUtilOutputLine& onLine) {
    return runHDIUtilProgram(QString::fromStdString(platform::hdiutilProgramPath()), args,
                             stdinText, onLine);
}

std::optional<double> parsePercentLine(const QString& line) {
    static const QString prefix = QStringLiteral("PERCENT:");
    if (!line.startsWith(prefix))
        return std::nullopt;
    bool ok = false;
    const double percent = line.mid(prefix.size()).trimmed().toDouble(&ok);
    if (!ok || percent < 0)
        return std::nullopt;
    return std::min(percent, 100.0) / 100.0;
}

std::optional<QString> parseMountPoint(const QString& plist) {
    return parseMountPoint(strictUtf8(plist).value_or(QByteArray()));
}

std::optional<QString> parseMountPoint(const QByteArray& plist) {
    const PlistPtr root = parsePlist(plist);
    if (!isDictionary(root.get()))
        return std::nullopt;
    return firstMountPoint(plist_dict_get_item(root.get(), "system-entities"));
}

namespace {

// A mount's owner is known to run only when the list says so in as many words.
bool ownerKnownAlive(plist_t image) {
    plist_t alive = plist_dict_get_item(image, "owner-alive");
    uint8_t value = 0;
    if (!alive || plist_get_node_type(alive) != PLIST_BOOLEAN)
        return false;
    plist_get_bool_val(alive, &value);
    return value != 0;
}

std::optional<QStringList> mountPointsOfImage(const QString& plist, const QString& imagePath,
                                              bool onlyStale) {
    const PlistPtr root = parsePlist(plist);
    if (!isDictionary(root.get()))
        return std::nullopt;
    plist_t images = plist_dict_get_item(root.get(), "images");
    if (!isArray(images))
        return std::nullopt;
    QStringList mountPoints;
    const QString wanted = QFileInfo(imagePath).canonicalFilePath();
    for (uint32_t i = 0; i < plist_array_get_size(images); ++i) {
        plist_t image = plist_array_get_item(images, i);
        if (!isDictionary(image))
            continue;
        const auto path = stringValue(plist_dict_get_item(image, "image-path"));
        if (!path || wanted.isEmpty() || QFileInfo(*path).canonicalFilePath() != wanted)
            continue;
        if (onlyStale && ownerKnownAlive(image))
            continue;
        if (const auto mountPoint = firstMountPoint(plist_dict_get_item(image, "system-entities")))
            mountPoints.append(*mountPoint);
    }
    return mountPoints;
}

} // namespace

std::optional<QStringList> parseAttachedMountPoints(const QString& plist,
                                                    const QString& imagePath) {
    return mountPointsOfImage(plist, imagePath, false);
}

std::optional<QStringList> parseStaleMountPoints(const QString& plist, const QString& imagePath) {
    return mountPointsOfImage(plist, imagePath, true);
}
