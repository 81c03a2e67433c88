import QtQuick
import Velmora.Views

// The code that a television shows on its screen.
DialogFrame {
    id: dialog

    required property RoutePickerModel routes
    // Until a new code is begun.
    property bool wasWrong: false

    title: routes.questionTitle
    words: routes.questionText
    error: wasWrong || !routes.canAnswer ? routes.questionError : ""
    accept: qsTr("Continue")
    canAccept: routes.canAnswer && code.isComplete
    onAccepted: routes.answer(code.text)
    onCancelled: routes.dismiss()
    onAboutToShow: {
        wasWrong = false;
        code.clear();
        code.forceActiveFocus();
    }

    CodeField {
        id: code

        anchors.horizontalCenter: parent ? parent.horizontalCenter : undefined
        canType: dialog.routes.canAnswer
        hasError: dialog.error.length > 0
        onEdited: {
            clearing.stop();
            dialog.wasWrong = false;
        }
        onCompleted: entered => dialog.routes.answer(entered)
    }

    Connections {
        target: dialog.routes

        function onWrongAnswered() {
            dialog.wasWrong = true;
            // Whoever types on at once begins a new code.
            code.selectAll();
            clearing.restart();
        }
    }

    // Long enough to see which digits were wrong.
    Timer {
        id: clearing

        interval: 1200
        onTriggered: code.clear()
    }
}
