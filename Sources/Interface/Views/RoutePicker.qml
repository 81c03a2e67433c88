import QtQuick
import Velmora.Views

// The menu of televisions at the AirPlay button, and the dialogs that choosing one may need.
Item {
    id: picker

    required property RoutePickerModel routes
    required property IconButton opener
    readonly property bool isOpen: menu.opened || menu.visible
    readonly property bool isModal: menu.visible || address.visible || code.visible || password.visible

    function openMenu() {
        menu.open();
    }

    function openAddressDialog() {
        address.open();
    }

    MenuPopup {
        id: menu

        opener: picker.opener
        rows: picker.routes.rows
        heading: qsTr("Play on")
        footer: qsTr("Add a television by address…")
        footerSymbol: "plus"
        onFooterChosen: address.open()
        onVisibleChanged: picker.routes.setOpen(visible)
    }

    AddressDialog {
        id: address

        opener: picker.opener
        routes: picker.routes
    }

    CodeDialog {
        id: code

        opener: picker.opener
        routes: picker.routes
        visible: picker.routes.hasQuestion && picker.routes.asksForCode
    }

    PasswordDialog {
        id: password

        opener: picker.opener
        routes: picker.routes
        visible: picker.routes.hasQuestion && !picker.routes.asksForCode
    }

    Connections {
        target: picker.routes

        function onOpenRequested() {
            picker.openMenu();
        }
    }
}
