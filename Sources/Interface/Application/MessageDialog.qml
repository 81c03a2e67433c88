import QtQuick
import QtQuick.Templates as T
import Velmora.Application
import Velmora.Views

// What the application has to say, and where there is more about it.
PopupFrame {
    id: dialog

    required property MovieWindow controller
    readonly property bool hasPage: controller.messagePage.toString().length > 0

    anchors.centerIn: T.Overlay.overlay
    width: 360
    radius: 16
    padding: Theme.padding
    modal: true
    closePolicy: T.Popup.CloseOnEscape

    T.Overlay.modal: Rectangle {
        color: Theme.scrim
    }

    onOpened: (hasPage ? get : done).forceActiveFocus()

    contentItem: Column {
        LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
        LayoutMirroring.childrenInherit: true
        spacing: 4
        Accessible.role: Accessible.Dialog
        Accessible.name: dialog.controller.messageTitle
        Accessible.description: dialog.controller.messageText

        Paragraph {
            width: parent.width
            text: dialog.controller.messageTitle
            color: Theme.window.text
            line: Theme.headingLine
            font.pixelSize: Theme.headingSize
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
        }

        Flickable {
            width: parent.width
            // Long notes scroll, so that the buttons stay in the smallest window.
            height: Math.min(words.implicitHeight, 180)
            contentHeight: words.implicitHeight
            clip: true
            boundsBehavior: Flickable.StopAtBounds

            Paragraph {
                id: words

                width: parent.width
                text: dialog.controller.messageText
                color: Theme.window.text2
                // What is new comes as a list.
                horizontalAlignment: text.includes("\n") ? Text.AlignLeft : Text.AlignHCenter
            }
        }

        Item {
            width: 1
            height: 16
        }

        Row {
            id: buttons

            readonly property int each: dialog.hasPage ? (width - spacing) / 2 : width

            width: parent.width
            spacing: 10

            PushButton {
                id: done

                width: buttons.each
                isInDialog: true
                isPrimary: !dialog.hasPage
                text: dialog.hasPage ? qsTr("Not Now") : qsTr("Close")
                onClicked: dialog.close()
            }

            PushButton {
                id: get

                width: buttons.each
                visible: dialog.hasPage
                isInDialog: true
                isPrimary: true
                text: qsTr("Get It…")
                onClicked: {
                    dialog.close();
                    Qt.openUrlExternally(dialog.controller.messagePage);
                }
            }
        }
    }
}
