import QtQuick
import Velmora.Views

// Around the control that has the keyboard.
Item {
    id: ring

    required property Inks inks
    property real radius: 10

    anchors.fill: parent
    anchors.margins: -4

    Rectangle {
        anchors.fill: parent
        anchors.margins: 2
        radius: ring.radius + 2
        color: "transparent"
        border.width: 2
        border.color: ring.inks.focusGap
    }

    Rectangle {
        anchors.fill: parent
        radius: ring.radius + 4
        color: "transparent"
        border.width: 2
        border.color: ring.inks.focus
    }
}
