import QtQuick
import Velmora.Views
import QtQuick.Templates as T

// What opens above the window's content.
T.Popup {
    id: popup

    // Has the keyboard again when this closes.
    property IconButton opener: null
    property real radius: 14
    // Where it lies once it has risen.
    property real restingY: 0
    property real drop: 0

    y: restingY + drop
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: 6
    focus: true
    margins: 0
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside

    // Otherwise the frame would be a dialog without a name around what says itself what it is.
    Component.onCompleted: contentItem.parent.Accessible.ignored = true
    onClosed: {
        const focused = parent.Window.activeFocusItem;
        const isNowhere = focused === null || focused === parent.Window.contentItem;
        if (opener && isNowhere)
            opener.button.forceActiveFocus(Qt.PopupFocusReason);
    }

    background: Item {
        Shadow {
            x: -spread
            y: -spread + drop
            width: parent.width + 2 * spread
            height: parent.height + 2 * spread
            spread: 36
            drop: 12
            radius: popup.radius
            opacity: 0.42
        }

        Rectangle {
            anchors.fill: parent
            anchors.margins: -1
            radius: popup.radius + 1
            color: Theme.surface
            border.width: 1
            border.color: Theme.line
        }
    }

    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.quick; easing.type: Easing.OutCubic }
        NumberAnimation { property: "drop"; from: 6; to: 0; duration: Theme.quick; easing.type: Easing.OutCubic }
    }
    exit: Transition {
        NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.quick; easing.type: Easing.OutCubic }
    }
}
