import QtQuick
import Velmora.Views

// What lies behind a control's words: its fill, the layer for pointer and press, the ring for the keyboard.
Rectangle {
    id: ground

    required property Inks inks
    required property color words
    required property bool isHovered
    required property bool isPressed
    required property bool hasFocus
    property bool isSolid: false
    readonly property bool sinks: inks.sinksWhenPressed && !isSolid

    Rectangle {
        anchors.fill: parent
        radius: ground.radius
        color: ground.words
        opacity: ground.isPressed ? (ground.sinks ? 0 : 0.14) : ground.isHovered ? 0.08 : 0

        Behavior on opacity {
            NumberAnimation { duration: Theme.quick; easing.type: Easing.OutCubic }
        }
    }

    FocusRing {
        visible: ground.hasFocus
        inks: ground.inks
        radius: ground.radius
    }
}
