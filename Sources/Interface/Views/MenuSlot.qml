import QtQuick
import Velmora.Views

// A row of a menu of whatever kind.
Item {
    id: slot

    required property int index
    required property string kind
    required property string text
    required property string detail
    required property string symbol
    required property string keys
    required property string sign
    required property bool canChoose
    required property bool canForget
    readonly property MenuView view: ListView.view as MenuView
    readonly property int aboveHeading: index === 0 ? 10 : 4

    width: view ? view.width : 0
    implicitHeight: kind === "choice" ? choice.implicitHeight : kind === "line" ? line.implicitHeight : aboveHeading + Theme.captionLine + 6

    MenuItemRow {
        id: choice

        anchors.fill: parent
        visible: slot.kind === "choice"
        text: slot.text
        detail: slot.detail
        symbol: slot.symbol
        keys: slot.keys
        sign: slot.sign
        canChoose: slot.canChoose
        canForget: slot.canForget
        hasLead: slot.view !== null && slot.view.rows.hasSymbols
        isCurrent: slot.view !== null && slot.view.current === slot.index
        lowest: slot.view ? slot.view.lowest : 44
        onPointed: slot.view.pointed(slot.index)
        onClicked: slot.view.chosen(slot.index)
        onForgetClicked: slot.view.rows.forget(slot.index)
    }

    MenuLine {
        id: line

        anchors.fill: parent
        visible: slot.kind === "line"
    }

    Words {
        x: 12
        y: slot.aboveHeading
        width: parent.width - 24
        visible: slot.kind === "heading"
        line: Theme.captionLine
        text: slot.text
        color: Theme.window.text2
        font.pixelSize: Theme.captionSize
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignLeft
    }
}
