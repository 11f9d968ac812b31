#pragma once

#include <QObject>
#include <QString>

// How far the work under way has got, for the browser's progress strip. Totals are counted
// before the work starts; zero when unknown.
struct WorkProgress {
    Q_GADGET
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(double bytesDone MEMBER bytesDone)
    Q_PROPERTY(double bytesTotal MEMBER bytesTotal)
    Q_PROPERTY(int filesDone MEMBER filesDone)
    Q_PROPERTY(int filesTotal MEMBER filesTotal)
    Q_PROPERTY(double fraction MEMBER fraction)

public:
    QString name; // the item being worked on
    double bytesDone = 0; // doubles, because QML has no 64-bit integers
    double bytesTotal = 0;
    int filesDone = 0;
    int filesTotal = 0;
    // From 0 to 1, for work that counts neither files nor bytes (a backup, as 7-Zip tells
    // it); below 0 when not known.
    double fraction = -1;

    bool operator==(const WorkProgress&) const = default;
};
Q_DECLARE_METATYPE(WorkProgress)
