import QtQuick
import QtQuick.Window
import Velmora.Application
import Velmora.Views

// For choosing a movie, or the folder that one came in, where the desktop has no dialog of its own. A press on a
// folder shows what is in it; a press on a movie opens it.
Window {
    id: window

    required property MoviePicker picker
    readonly property MovieBrowser browser: picker.browser

    function goUp() {
        const left = browser.name;
        browser.goUp();
        contents.current = Math.max(0, browser.contents.startingWith(left));
        contents.reveal();
    }

    width: 720
    height: 480
    minimumWidth: 520
    minimumHeight: 360
    title: picker.title
    modality: Qt.ApplicationModal
    flags: Qt.Dialog
    color: Theme.windowBottom
    onClosing: picker.cancel()

    Item {
        id: all

        anchors.fill: parent
        anchors.margins: 16
        LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
        LayoutMirroring.childrenInherit: true
        Keys.onPressed: event => {
            if (event.key !== Qt.Key_Backspace || !window.browser.canGoUp)
                return;
            window.goUp();
            event.accepted = true;
        }

        Paragraph {
            id: message

            width: parent.width
            text: window.picker.message
            color: Theme.window.text2
            horizontalAlignment: Text.AlignLeft
        }

        MenuList {
            id: places

            anchors.top: frame.top
            anchors.left: parent.left
            width: 200
            highest: frame.height
            lowest: 36
            activeFocusOnTab: true
            name: qsTr("Places")
            rows: window.browser.places
            onActiveFocusChanged: current = activeFocus ? rows.first() : -1
        }

        Rectangle {
            id: frame

            anchors.top: message.bottom
            anchors.topMargin: 12
            anchors.bottom: buttons.top
            anchors.bottomMargin: 16
            anchors.left: places.right
            anchors.leftMargin: 12
            anchors.right: parent.right
            radius: 12
            color: Theme.surface
            border.width: 1
            border.color: Theme.line

            IconButton {
                id: up

                x: LayoutMirroring.enabled ? parent.width - width - 6 : 6
                y: 6
                implicitWidth: 36
                implicitHeight: 36
                symbol: "up"
                symbolSize: 20
                canPress: window.browser.canGoUp
                help: qsTr("Enclosing Folder (Backspace)")
                name: qsTr("Enclosing Folder")
                onClicked: window.goUp()
            }

            Words {
                anchors.left: up.right
                anchors.leftMargin: 6
                anchors.right: parent.right
                anchors.rightMargin: 12
                anchors.verticalCenter: up.verticalCenter
                text: window.browser.name
                font.weight: Font.DemiBold
                horizontalAlignment: Text.AlignLeft
            }

            MenuList {
                id: contents

                anchors.top: up.bottom
                anchors.topMargin: 4
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.margins: 6
                highest: frame.height - up.height - 16
                lowest: 36
                focus: true
                activeFocusOnTab: true
                name: window.browser.name
                rows: window.browser.contents
                onActiveFocusChanged: current = activeFocus ? rows.first() : -1
                Component.onCompleted: forceActiveFocus()
            }
        }

        Row {
            id: buttons

            anchors.right: parent.right
            anchors.bottom: parent.bottom
            spacing: 10

            PushButton {
                isInDialog: true
                text: qsTr("Cancel")
                onClicked: window.picker.cancel()
            }

            PushButton {
                isInDialog: true
                text: qsTr("Open This Folder")
                onClicked: window.picker.choose(window.browser.folder)
            }
        }
    }

    Connections {
        target: window.browser

        function onFolderChanged() {
            contents.current = window.browser.contents.first();
            contents.reveal();
            contents.forceActiveFocus();
        }
    }

    Shortcut {
        sequence: "Esc"
        onActivated: window.picker.cancel()
    }
}
