import QtQuick
import Velmora.Views

// Over the whole window while a drag is over it.
Rectangle {
    color: Theme.dropTint
    Accessible.role: Accessible.AlertMessage
    Accessible.name: words.text

    Rectangle {
        anchors.fill: parent
        anchors.margins: 12
        radius: 14
        color: "transparent"
        border.width: 2
        border.color: Theme.dropFrame
    }

    Column {
        anchors.centerIn: parent
        spacing: 12

        Symbol {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 34
            height: 34
            name: "drop"
            color: "#FFFFFF"
        }

        Words {
            id: words

            anchors.horizontalCenter: parent.horizontalCenter
            line: Theme.headingLine
            text: qsTr("Drop to Open")
            color: "#FFFFFF"
            font.pixelSize: Theme.headingSize
            font.weight: Font.DemiBold
        }
    }
}
