#include "PanelRequest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace platform {

namespace {

QStringList fromJson(const QJsonArray& array) {
    QStringList strings;
    for (const QJsonValue& value : array) {
        if (value.isString())
            strings.append(value.toString());
    }
    return strings;
}

QByteArray line(const QJsonDocument& document) {
    return document.toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

QByteArray encodePanelRequest(const PanelRequest& request) {
    QJsonObject json{{"parentWindow", QString::number(request.parentWindow)},
                     {"applicationName", request.applicationName},
                     {"desktopFileName", request.desktopFileName},
                     {"icon", QString::fromLatin1(request.iconPng.toBase64())}};
    if (const auto* open = std::get_if<OpenPanelOptions>(&request.options)) {
        json.insert("kind", "open");
        json.insert("files", open->canChooseFiles);
        json.insert("folders", open->canChooseDirectories);
        json.insert("multiple", open->allowsMultipleSelection);
        json.insert("prompt", open->prompt);
        json.insert("message", open->message);
    } else {
        const auto& save = std::get<SavePanelOptions>(request.options);
        json.insert("kind", "save");
        json.insert("title", save.title);
        json.insert("prompt", save.prompt);
        json.insert("message", save.message);
        json.insert("name", save.nameFieldStringValue);
        json.insert("types", QJsonArray::fromStringList(save.allowedContentTypes));
    }
    return line(QJsonDocument(json));
}

std::optional<PanelRequest> decodePanelRequest(const QByteArray& line) {
    const QJsonObject json = QJsonDocument::fromJson(line).object();
    PanelRequest request;
    request.parentWindow = json["parentWindow"].toString().toULongLong();
    request.applicationName = json["applicationName"].toString();
    request.desktopFileName = json["desktopFileName"].toString();
    request.iconPng = QByteArray::fromBase64(json["icon"].toString().toLatin1());
    const QString kind = json["kind"].toString();
    if (kind == "open") {
        request.options = OpenPanelOptions{json["files"].toBool(), json["folders"].toBool(),
                                           json["multiple"].toBool(), json["prompt"].toString(),
                                           json["message"].toString()};
    } else if (kind == "save") {
        request.options = SavePanelOptions{json["title"].toString(), json["prompt"].toString(),
                                           json["message"].toString(), json["name"].toString(),
                                           fromJson(json["types"].toArray())};
    } else {
        return std::nullopt;
    }
    return request;
}

QByteArray encodePanelAnswer(const QStringList& chosen) {
    return line(QJsonDocument(QJsonArray::fromStringList(chosen)));
}

QStringList decodePanelAnswer(const QByteArray& line) {
    return fromJson(QJsonDocument::fromJson(line).array());
}

} // namespace platform
