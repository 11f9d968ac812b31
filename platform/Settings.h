#pragma once

#include <QObject>
#include <QSettings>
#include <QString>

#include <memory>

namespace platform {

// The user's persisted preferences. The app has exactly one, the lock-screen disguise; it is
// read live by every screen, so one shared object announces its changes to all of them.
// Tests hand in a QSettings of their own instead of the user's.
class Settings : public QObject {
    Q_OBJECT
    Q_PROPERTY(
        QString disguiseMode READ disguiseMode WRITE setDisguiseMode NOTIFY disguiseModeChanged)

public:
    // Without a store, the user's own settings of this application are used.
    explicit Settings(std::unique_ptr<QSettings> store = nullptr, QObject* parent = nullptr);
    ~Settings() override;

    // The stored text as it is, "none" when nothing was stored; it may name no disguise.
    QString disguiseMode() const;
    void setDisguiseMode(const QString& raw);

signals:
    void disguiseModeChanged();

private:
    std::unique_ptr<QSettings> m_store;
};

} // namespace platform
