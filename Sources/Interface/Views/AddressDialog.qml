import QtQuick
import Velmora.Views

// A television that does not announce itself.
DialogFrame {
    id: dialog

    required property RoutePickerModel routes

    function send() {
        if (!canAccept)
            return;
        error = routes.add(address.text);
        if (error.length === 0)
            close();
    }

    title: qsTr("Add a television")
    words: qsTr("Type its name or address on this network.")
    accept: qsTr("Add")
    canAccept: address.text.trim().length > 0
    onAccepted: send()
    onAboutToShow: {
        address.clear();
        error = "";
        address.forceActiveFocus();
    }

    InputField {
        id: address

        width: parent ? parent.width : 0
        hasError: dialog.error.length > 0
        Accessible.name: qsTr("Name or address")
        onTextEdited: dialog.error = ""
        onAccepted: dialog.send()
    }
}
