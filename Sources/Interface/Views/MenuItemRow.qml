import QtQuick
import Velmora.Views

// One choice of a menu.
Item {
    id: row

    property string text
    property string detail
    property string symbol
    property string keys
    property string sign
    property bool canChoose: true
    property bool canForget: false
    property bool isCurrent: false
    // A tick stands before the words where rows have no symbols of their own.
    property bool hasLead: false
    property int lowest: 44
    readonly property bool hasDetail: detail.length > 0
    readonly property bool leadsWithSign: hasLead && symbol.length === 0
    readonly property bool hasTail: !leadsWithSign && sign.length > 0

    signal clicked
    signal pointed
    signal forgetClicked

    implicitHeight: hasDetail ? Math.max(52, wordColumn.height + 16) : Math.max(lowest, Theme.bodyLine + 16)
    Accessible.role: Accessible.MenuItem
    Accessible.name: text
    Accessible.description: detail
    Accessible.checked: sign === "check"
    Accessible.checkable: leadsWithSign || sign === "check"
    Accessible.onPressAction: clicked()

    Rectangle {
        anchors.fill: parent
        radius: 9
        color: Theme.raised
        visible: row.isCurrent
    }

    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onPositionChanged: row.pointed()
        onClicked: row.clicked()
    }

    Symbol {
        id: lead

        anchors.left: parent.left
        anchors.leftMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        width: row.hasLead ? 20 : 0
        height: width
        visible: name.length > 0
        name: row.leadsWithSign ? row.sign : row.symbol
        color: row.leadsWithSign ? Theme.window.accent : Theme.window.text
        opacity: row.canChoose ? 1 : 0.42
    }

    Column {
        id: wordColumn

        anchors.left: lead.right
        anchors.leftMargin: row.hasLead ? 12 : 0
        anchors.right: tail.left
        anchors.verticalCenter: parent.verticalCenter

        Words {
            id: label

            width: parent.width
            text: row.text
            color: row.canChoose ? Theme.window.text : Theme.window.off
            horizontalAlignment: Text.AlignLeft
        }

        // Whole where it tells why there is nothing to choose.
        Words {
            width: parent.width
            height: Math.max(line, implicitHeight)
            visible: row.hasDetail
            line: Theme.captionLine
            text: row.detail
            color: Theme.window.text2
            font.pixelSize: Theme.captionSize
            horizontalAlignment: Text.AlignLeft
            wrapMode: row.canChoose ? Text.NoWrap : Text.Wrap
            maximumLineCount: row.canChoose ? 1 : 6
        }
    }

    Row {
        id: tail

        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        leftPadding: width > 0 ? 12 : 0
        spacing: 4

        Words {
            anchors.verticalCenter: parent.verticalCenter
            visible: row.keys.length > 0
            line: Theme.captionLine
            text: row.keys
            color: Theme.window.text2
            font.pixelSize: Theme.captionSize
        }

        IconButton {
            anchors.verticalCenter: parent.verticalCenter
            implicitWidth: 36
            implicitHeight: 36
            visible: row.canForget && row.isCurrent
            button.focusPolicy: Qt.NoFocus
            symbol: "close"
            symbolSize: 18
            color: Theme.window.text2
            help: qsTr("Forget This Television")
            onClicked: row.forgetClicked()
        }

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            width: 18
            height: 18
            visible: row.hasTail && row.sign !== "busy"
            name: row.sign
            color: row.sign === "check" ? Theme.window.accent : Theme.window.text2
        }

        BusyRing {
            anchors.verticalCenter: parent.verticalCenter
            width: 18
            height: 18
            color: Theme.window.accent
            visible: row.hasTail && row.sign === "busy"
        }
    }

    HelpTip {
        text: row.text
        visible: row.isCurrent && label.truncated
    }
}
