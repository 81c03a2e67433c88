import QtQuick
import Velmora.Views

// Four digits, typed or pasted; the fourth completes the code.
FocusScope {
    id: field

    property bool hasError: false
    property bool canType: true
    readonly property string text: input.text
    readonly property bool isComplete: input.text.length === 4

    signal completed(string code)
    signal edited

    function clear() {
        input.text = "";
    }

    implicitWidth: cells.implicitWidth
    implicitHeight: cells.implicitHeight
    LayoutMirroring.enabled: false
    LayoutMirroring.childrenInherit: true

    TextInput {
        id: input

        anchors.fill: parent
        focus: true
        opacity: 0
        readOnly: !field.canType
        maximumLength: 4
        inputMethodHints: Qt.ImhDigitsOnly
        validator: RegularExpressionValidator { regularExpression: /[0-9]{0,4}/ }
        Accessible.role: Accessible.EditableText
        Accessible.name: qsTr("Code, four digits")
        onTextEdited: {
            field.edited();
            if (text.length === 4)
                field.completed(text);
        }
    }

    Row {
        id: cells

        spacing: 10

        Repeater {
            model: 4

            delegate: Rectangle {
                id: cell

                required property int index
                readonly property bool isNext: input.activeFocus && input.text.length === index

                width: 48
                height: 56
                radius: 10
                color: Theme.field
                border.width: field.hasError || isNext ? 2 : 1
                border.color: field.hasError ? Theme.window.danger : isNext ? Theme.window.focus : Theme.fieldLine

                Words {
                    anchors.centerIn: parent
                    line: Math.ceil(28 * Theme.textScale)
                    text: input.text.charAt(cell.index)
                    font.pixelSize: Theme.codeSize
                    font.weight: Font.DemiBold
                }

                Rectangle {
                    anchors.centerIn: parent
                    width: 1
                    height: 26
                    color: Theme.window.text
                    visible: cell.isNext && !field.hasError
                }
            }
        }
    }

    TapHandler {
        onTapped: input.forceActiveFocus()
    }
}
