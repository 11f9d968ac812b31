#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// Which lock screen the disguise calls for; text that names no disguise gets the branded one.
class UnlockChooser : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString disguiseRaw READ disguiseRaw WRITE setDisguiseRaw NOTIFY disguiseRawChanged)
    Q_PROPERTY(LockScreen lockScreen READ lockScreen NOTIFY disguiseRawChanged)

public:
    enum class LockScreen { Branded, Neutral, MathQuiz };
    Q_ENUM(LockScreen)

    using QObject::QObject;

    QString disguiseRaw() const { return m_disguiseRaw; }
    void setDisguiseRaw(const QString& raw);
    LockScreen lockScreen() const { return lockScreenFor(m_disguiseRaw); }

    static LockScreen lockScreenFor(const QString& disguiseRaw);

signals:
    void disguiseRawChanged();

private:
    QString m_disguiseRaw = QStringLiteral("none");
};
