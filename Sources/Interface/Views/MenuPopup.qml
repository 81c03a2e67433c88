import QtQuick
import Velmora.Views

// A menu at a button: above it or below it, its outer edge on the button's.
PopupFrame {
    id: popup

    required opener
    required property MenuRows rows
    property alias heading: list.heading
    property alias name: list.name
    property alias footer: list.footer
    property alias footerSymbol: list.footerSymbol
    property alias lowest: list.lowest
    property bool opensDown: false
    property bool isAtLeadingEdge: false
    readonly property bool isMirrored: Application.layoutDirection === Qt.RightToLeft

    signal footerChosen

    parent: opener
    width: Math.min(300, list.Window.width > 0 ? list.Window.width - 48 : 300)
    x: isAtLeadingEdge === isMirrored ? opener.width - width : 0
    restingY: opensDown ? opener.height + 4 : -height - 10

    onAboutToShow: list.pointAtChosen()
    // The rows are laid out by then.
    onOpened: list.reveal()

    contentItem: MenuList {
        id: list

        LayoutMirroring.enabled: popup.isMirrored
        LayoutMirroring.childrenInherit: true
        rows: popup.rows
        highest: (popup.opener.Window.height > 0 ? popup.opener.Window.height - 94 : 400) - 2 * popup.padding
        onDone: popup.close()
        onFooterChosen: popup.footerChosen()
    }
}
