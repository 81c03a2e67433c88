import QtQuick
import Velmora.Views

// Between two groups of a menu.
Item {
    implicitHeight: 13

    Rectangle {
        x: 12
        y: 6
        width: parent.width - 24
        height: 1
        color: Theme.line
    }
}
