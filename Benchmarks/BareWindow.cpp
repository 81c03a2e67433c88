// benchmark-bare-window: one window with one box, and nothing else. What any program of this kind costs at
// least.
#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    QQmlApplicationEngine engine;
    engine.loadData(R"(
        import QtQuick
        Window {
            width: 640
            height: 460
            visible: true
            Rectangle {
                anchors.centerIn: parent
                width: 320
                height: 230
                color: "steelblue"
            }
        }
    )");
    return engine.rootObjects().isEmpty() ? 1 : QCoreApplication::exec();
}
