#include "Settings.h"

namespace platform {

namespace {
const QString kDisguiseModeKey = QStringLiteral("disguiseMode");
} // namespace

Settings::Settings(std::unique_ptr<QSettings> store, QObject* parent)
    : QObject(parent), m_store(store ? std::move(store) : std::make_unique<QSettings>()) {}

Settings::~Settings() = default;

QString Settings::disguiseMode() const {
    return m_store->value(kDisguiseModeKey, QStringLiteral("none")).toString();
}

void Settings::setDisguiseMode(const QString& raw) {
    if (raw == disguiseMode())
        return;
    m_store->setValue(kDisguiseModeKey, raw);
    m_store->sync();
    emit disguiseModeChanged();
}

} // namespace platform
