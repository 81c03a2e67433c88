import QtQuick
import Velmora.Views

// The password that a television asks for.
DialogFrame {
    id: dialog

    required property RoutePickerModel routes

    function send() {
        if (canAccept)
            routes.answer(password.text);
    }

    title: routes.questionTitle
    words: routes.questionText
    error: routes.questionError
    accept: qsTr("Continue")
    canAccept: routes.canAnswer && password.text.length > 0
    onAccepted: send()
    onCancelled: routes.dismiss()
    onAboutToShow: {
        password.clear();
        password.isRevealed = false;
        password.forceActiveFocus();
    }

    InputField {
        id: password

        width: parent ? parent.width : 0
        isSecret: true
        hasError: dialog.error.length > 0
        Accessible.name: qsTr("Password")
        onAccepted: dialog.send()
    }

    Connections {
        target: dialog.routes

        function onWrongAnswered() {
            password.selectAll();
        }
    }
}
