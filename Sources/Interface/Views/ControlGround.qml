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

    Rectangle {
        anchors.fill: parent
        radius: ground.radius
        color: ground.words
        opacity: ground.isPressed ? (ground.inks.pressedLayer > 0 ? ground.inks.pressedLayer : 0) : ground.isHovered ? 0.08 : 0

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
