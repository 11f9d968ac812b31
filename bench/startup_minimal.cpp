// The yardsticks for Morvanta's start: the least a Qt Quick application does to show a window
// of the same size, and with --controls the least a Qt Quick Controls one does (a label and a
// button in an ApplicationWindow), which is what Morvanta's screens are built of.

#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char* argv[]) {
    QGuiApplication app(argc, argv);
    QQmlApplicationEngine engine;
    if (app.arguments().contains(QStringLiteral("--controls"))) {
        engine.loadData(
            "import QtQuick\nimport QtQuick.Controls.Basic\n"
            "ApplicationWindow { width: 600; height: 600; visible: true\n"
            "    Column { Label { text: \"Morvanta\" } Button { text: \"Unlock\" } } }");
    } else {
        engine.loadData("import QtQuick\n"
                        "Window { width: 600; height: 600; visible: true\n"
                        "    Rectangle { anchors.fill: parent; color: \"#1a1530\" } }");
    }
    return engine.rootObjects().isEmpty() ? 1 : app.exec();
}
