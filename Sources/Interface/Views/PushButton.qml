import QtQuick
import Velmora.Views
import QtQuick.Templates as T

T.AbstractButton {
    id: button

    property Inks inks: Theme.window
    property bool isPrimary: false
    property bool isInDialog: false
    readonly property color words: !enabled ? inks.off : isPrimary ? inks.wordOnSolid : inks.text

    implicitWidth: label.implicitWidth + 36
    implicitHeight: Math.max(isInDialog ? 36 : 40, Theme.bodyLine + 16)
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.name: text
    Accessible.onPressAction: {
        if (enabled)
            button.clicked();
    }

    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    background: ControlGround {
        radius: 10
        color: !button.enabled ? button.inks.disabledFill : button.isPrimary ? button.inks.solid : button.pressed ? button.inks.fillPressed : button.inks.fill
        inks: button.inks
        words: button.words
        isHovered: button.hovered && button.enabled
        isPressed: button.pressed
        hasFocus: button.visualFocus
        isSolid: button.isPrimary
    }

    contentItem: Item {
        Words {
            id: label

            anchors.centerIn: parent
            width: Math.min(implicitWidth, parent.width - 24)
            text: button.text
            color: button.words
            font.weight: button.isPrimary ? Font.DemiBold : Font.Medium
        }
    }
}
