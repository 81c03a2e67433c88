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

    function selectAll() {
        input.selectAll();
    }

    implicitWidth: cells.implicitWidth
    implicitHeight: cells.implicitHeight
    LayoutMirroring.enabled: false
    LayoutMirroring.childrenInherit: true

    TextInput {
        id: input

        anchors.fill: parent
        focus: true
        // The cells show what is typed. Screen readers pass over what has no opacity.
        color: "transparent"
        selectionColor: "transparent"
        selectedTextColor: "transparent"
        cursorDelegate: Item {
        }
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

        CodeCell {
            digit: input.text.charAt(0)
            isNext: input.activeFocus && input.text.length === 0
            hasError: field.hasError
        }

        CodeCell {
            digit: input.text.charAt(1)
            isNext: input.activeFocus && input.text.length === 1
            hasError: field.hasError
        }

        CodeCell {
            digit: input.text.charAt(2)
            isNext: input.activeFocus && input.text.length === 2
            hasError: field.hasError
        }

        CodeCell {
            digit: input.text.charAt(3)
            isNext: input.activeFocus && input.text.length === 3
            hasError: field.hasError
        }
    }

    TapHandler {
        onTapped: input.forceActiveFocus()
    }
}
