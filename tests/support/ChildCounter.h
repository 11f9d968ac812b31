#pragma once

#include <QEvent>
#include <QObject>

// Counts the children an object gains while it lives: for the engine, each restart of its
// idle timer, which makes a new timer. (A child is announced before it is a timer, so any
// child counts.)
class ChildCounter : public QObject {
public:
    ChildCounter(QObject* watched, int& count) : m_watched(watched), m_count(count) {
        watched->installEventFilter(this);
    }
    ~ChildCounter() override { m_watched->removeEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::ChildAdded)
            ++m_count;
        return false;
    }

private:
    QObject* m_watched;
    int& m_count;
};
