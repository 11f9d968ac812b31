// The yardstick for Morvanta's start: the least a Qt Quick application does to show a window
// of the same size.

#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char* argv[]) {
    QGuiApplication app(argc, argv);
    QQmlApplicationEngine engine;
    engine.loadData("import QtQuick\n"
                    "Window { width: 600; height: 600; visible: true\n"
                    "    Rectangle { anchors.fill: parent; color: \"#1a1530\" } }");
    return engine.rootObjects().isEmpty() ? 1 : app.exec();
}
