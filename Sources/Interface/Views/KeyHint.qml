import QtQuick
import Velmora.Views

// A key and what it does.
Row {
    id: hint

    property Inks inks: Theme.window
    required property string keys
    required property string text

    spacing: 8
    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("%1: %2").arg(keys).arg(text)

    Rectangle {
        width: cap.implicitWidth + 16
        height: Theme.captionLine + 6
        radius: 6
        color: Qt.rgba(hint.inks.text.r, hint.inks.text.g, hint.inks.text.b, 0.14)

        Words {
            id: cap

            anchors.centerIn: parent
            line: Theme.captionLine
            text: hint.keys
            color: hint.inks.text
            font.pixelSize: Theme.captionSize
            font.weight: Font.DemiBold
        }
    }

    Words {
        line: Theme.captionLine + 6
        text: hint.text
        color: hint.inks.text2
        font.pixelSize: Theme.captionSize
    }
}
