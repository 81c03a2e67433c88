import QtQuick
import Velmora.Views
import QtQuick.Templates as T

// A line to type into. Addresses and passwords run left to right everywhere.
T.TextField {
    id: field

    property bool hasError: false
    property bool isSecret: false
    property bool isRevealed: false

    implicitHeight: Math.max(40, Theme.bodyLine + 20)
    leftPadding: 14
    rightPadding: isSecret ? 44 : 14
    verticalAlignment: TextInput.AlignVCenter
    horizontalAlignment: TextInput.AlignLeft
    echoMode: isSecret && !isRevealed ? TextInput.Password : TextInput.Normal
    inputMethodHints: Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText | Qt.ImhSensitiveData
    color: Theme.window.text
    selectionColor: Theme.window.accent
    selectedTextColor: Theme.window.wordOnSolid
    font.family: Application.font.family
    font.pixelSize: Theme.bodySize
    selectByMouse: true
    LayoutMirroring.enabled: false
    LayoutMirroring.childrenInherit: true

    background: Rectangle {
        radius: 10
        color: Theme.field
        border.width: field.hasError || field.activeFocus ? 2 : 1
        border.color: field.hasError ? Theme.window.danger : field.activeFocus ? Theme.window.focus : Theme.fieldLine
    }

    cursorDelegate: Rectangle {
        width: 2
        color: Theme.window.text
        visible: parent instanceof TextInput && (parent as TextInput).cursorVisible
    }

    IconButton {
        id: eye

        anchors.right: parent.right
        anchors.rightMargin: 4
        anchors.verticalCenter: parent.verticalCenter
        implicitWidth: 36
        implicitHeight: 36
        visible: field.isSecret
        symbol: "reveal"
        symbolSize: 20
        color: field.isRevealed ? Theme.window.accent : Theme.window.text
        help: field.isRevealed ? qsTr("Hide Password") : qsTr("Show Password")
        onClicked: field.isRevealed = !field.isRevealed
    }
}
