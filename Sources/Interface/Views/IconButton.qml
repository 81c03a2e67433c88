import QtQuick
import Velmora.Views
import QtQuick.Templates as T

// A round button with a symbol. Its help shows also while it cannot be pressed, which tells why.
Item {
    id: root

    property Inks inks: Theme.window
    property string symbol
    property int symbolSize: 28
    property color color: inks.text
    property color fill: "transparent"
    property color fillPressed: inks.sinksWhenPressed ? inks.fillPressed : fill
    property bool isSolid: false
    property bool isLit: false
    // What it opens is on the screen, where its help would lie over it.
    property bool isOpen: false
    property bool canPress: true
    property string help
    property string name: help
    property alias button: button
    // A press sends the help away until the pointer comes again: it may have opened something here.
    property bool isPressedSince: false
    readonly property bool showsHelp: pointer.hovered && !isPressedSince && !isOpen && help.length > 0

    signal clicked

    implicitWidth: 44
    implicitHeight: 44

    HoverHandler {
        id: pointer

        onHoveredChanged: root.isPressedSince = false
    }

    T.AbstractButton {
        id: button

        anchors.fill: parent
        enabled: root.canPress
        focusPolicy: Qt.StrongFocus
        hoverEnabled: true
        Accessible.name: root.name
        Accessible.onPressAction: {
            if (enabled)
                button.clicked();
        }
        Keys.onReturnPressed: button.clicked()
        Keys.onEnterPressed: button.clicked()
        onPressed: root.isPressedSince = true
        onClicked: root.clicked()

        background: ControlGround {
            radius: height / 2
            opacity: root.canPress ? 1 : 0.6
            color: root.isLit || root.isOpen ? root.inks.lit : button.pressed ? root.fillPressed : root.fill
            inks: root.inks
            words: root.color
            isHovered: button.hovered && root.canPress
            isPressed: button.pressed
            hasFocus: button.visualFocus
            isSolid: root.isSolid

            Behavior on color {
                ColorAnimation { duration: Theme.quick; easing.type: Easing.OutCubic }
            }
        }

        contentItem: Item {
            Symbol {
                anchors.centerIn: parent
                width: root.symbolSize
                height: root.symbolSize
                name: root.symbol
                color: root.color
                opacity: root.canPress ? 1 : 0.42
            }
        }
    }

    HelpTip {
        text: root.help
        visible: root.showsHelp
    }
}
