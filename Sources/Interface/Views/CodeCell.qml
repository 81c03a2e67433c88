import QtQuick
import Velmora.Views

// One digit of a code.
Rectangle {
    id: cell

    property string digit
    property bool isNext: false
    property bool hasError: false

    width: 48
    height: 56
    radius: 10
    color: Theme.field
    border.width: hasError || isNext ? 2 : 1
    border.color: hasError ? Theme.window.danger : isNext ? Theme.window.focus : Theme.fieldLine

    Words {
        anchors.centerIn: parent
        line: Math.ceil(28 * Theme.textScale)
        text: cell.digit
        font.pixelSize: Theme.codeSize
        font.weight: Font.DemiBold
    }

    Rectangle {
        anchors.centerIn: parent
        width: 1
        height: 26
        color: Theme.window.text
        visible: cell.isNext && !cell.hasError
    }
}
