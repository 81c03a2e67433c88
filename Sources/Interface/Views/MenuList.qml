import QtQuick
import Velmora.Views
import QtQuick.Templates as T

// The rows of a menu, steered by arrows, Home, End and typing. A last row may stay below rows that scroll.
FocusScope {
    id: menu

    required property MenuRows rows
    property string heading
    // What it is called where no heading says so.
    property string name: heading
    property string footer
    property string footerSymbol
    property int lowest: 44
    property real highest: 10000
    // The row that is pointed at; the footer comes behind the last row.
    property int current: -1
    readonly property int footerIndex: footer.length > 0 ? list.count : -2
    readonly property real fixedHeight: head.height + foot.height
    readonly property real room: highest - fixedHeight

    signal done
    signal footerChosen

    function pointAtChosen() {
        current = rows.current();
        list.positionViewAtIndex(current, ListView.Contain);
    }

    function step(by: int) {
        if (current === footerIndex)
            current = by < 0 ? rows.last() : current;
        else if (by > 0 && footer.length > 0 && current === rows.last())
            current = footerIndex;
        else
            current = rows.next(current, by);
        reveal();
    }

    function reveal() {
        if (current >= 0 && current < list.count)
            list.positionViewAtIndex(current, ListView.Contain);
    }

    function chooseCurrent() {
        if (current === footerIndex) {
            done();
            footerChosen();
        } else {
            choose(current);
        }
    }

    function choose(index: int) {
        if (!rows.accepts(index))
            return;
        done();
        rows.choose(index);
    }

    implicitHeight: fixedHeight + list.height
    focus: true
    Accessible.role: Accessible.PopupMenu
    Accessible.name: name

    Keys.onUpPressed: step(-1)
    Keys.onDownPressed: step(1)
    Keys.onReturnPressed: chooseCurrent()
    Keys.onEnterPressed: chooseCurrent()
    Keys.onSpacePressed: chooseCurrent()
    Keys.onDeletePressed: rows.forget(current)
    Keys.onPressed: event => {
        if (event.key === Qt.Key_Home) {
            current = rows.first();
        } else if (event.key === Qt.Key_End) {
            current = footer.length > 0 ? footerIndex : rows.last();
        } else if (event.text > " ") {  // Escape has a text too
            typed.text += event.text;
            typed.restart();
            const match = rows.startingWith(typed.text);
            if (match >= 0)
                current = match;
        } else {
            return;
        }
        event.accepted = true;
        reveal();
    }

    Timer {
        id: typed

        property string text

        interval: 1000
        onTriggered: text = ""
    }

    Item {
        id: head

        width: parent.width
        height: menu.heading.length > 0 ? Theme.captionLine + 16 : 0

        Words {
            x: 12
            y: 10
            width: parent.width - 24
            line: Theme.captionLine
            text: menu.heading
            color: Theme.window.text2
            font.pixelSize: Theme.captionSize
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignLeft
        }
    }

    MenuView {
        id: list

        anchors.top: head.bottom
        width: parent.width
        // A cut shows half a row, so that it is seen that there is more.
        height: contentHeight <= menu.room ? contentHeight : (Math.max(1, Math.floor(menu.room / menu.lowest - 0.5)) + 0.5) * menu.lowest
        rows: menu.rows
        lowest: menu.lowest
        current: menu.current
        delegate: MenuSlot {
        }
        onPointed: index => menu.current = index
        onChosen: index => menu.choose(index)

        T.ScrollBar.vertical: T.ScrollBar {
            visible: list.contentHeight > list.height
            padding: 2
            policy: T.ScrollBar.AlwaysOn
            implicitWidth: 8
            Accessible.ignored: true

            contentItem: Rectangle {
                implicitWidth: 4
                radius: 2
                color: Theme.window.off
            }
        }
    }

    Column {
        id: foot

        anchors.top: list.bottom
        width: parent.width
        visible: menu.footer.length > 0
        height: visible ? implicitHeight : 0

        MenuLine {
            width: parent.width
        }

        MenuItemRow {
            width: parent.width
            text: menu.footer
            symbol: menu.footerSymbol
            hasLead: true
            lowest: menu.lowest
            isCurrent: menu.current === menu.footerIndex
            onPointed: menu.current = menu.footerIndex
            onClicked: {
                menu.current = menu.footerIndex;
                menu.chooseCurrent();
            }
        }
    }
}
