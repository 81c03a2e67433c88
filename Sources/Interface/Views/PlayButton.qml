import QtQuick
import Velmora.Views

// Solid when the application waits for it to be pressed.
IconButton {
    button.focus: true
    implicitWidth: 52
    implicitHeight: 52
    symbolSize: 30
    fill: !canPress ? inks.disabledFill : isSolid ? inks.solid : inks.fill
    fillPressed: isSolid ? inks.solid : inks.fillPressed
    color: isSolid && canPress ? inks.wordOnSolid : inks.text
}
