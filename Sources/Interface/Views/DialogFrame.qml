import QtQuick
import Velmora.Views
import QtQuick.Templates as T

// A question in the middle of the window: a title, words, a field, and two buttons.
PopupFrame {
    id: dialog

    property string title
    property string words
    property string error
    property string accept
    property bool canAccept: true
    default property alias field: fieldSlot.data
    readonly property bool isMirrored: Application.layoutDirection === Qt.RightToLeft

    signal accepted
    signal cancelled

    function cancel() {
        close();
        cancelled();
    }

    anchors.centerIn: T.Overlay.overlay
    width: Math.min(360, content.Window.width > 0 ? content.Window.width - 48 : 360)
    radius: 16
    padding: Theme.padding
    modal: true
    closePolicy: T.Popup.NoAutoClose

    T.Overlay.modal: Rectangle {
        color: Theme.scrim

        Behavior on opacity {
            NumberAnimation { duration: Theme.quick; easing.type: Easing.OutCubic }
        }
    }

    contentItem: FocusScope {
        id: content

        focus: true
        implicitHeight: column.implicitHeight
        LayoutMirroring.enabled: dialog.isMirrored
        LayoutMirroring.childrenInherit: true
        Accessible.role: Accessible.Dialog
        Accessible.name: dialog.title
        Accessible.description: dialog.words
        Keys.onEscapePressed: dialog.cancel()

        Column {
            id: column

            width: parent.width

            Paragraph {
                width: parent.width
                text: dialog.title
                color: Theme.window.text
                line: Theme.headingLine
                font.pixelSize: Theme.headingSize
                font.weight: Font.DemiBold
                horizontalAlignment: Text.AlignHCenter
            }

            Item {
                width: 1
                height: 4
            }

            Paragraph {
                width: parent.width
                text: dialog.words
                color: Theme.window.text2
                horizontalAlignment: Text.AlignHCenter
            }

            Item {
                width: 1
                height: 16
            }

            Item {
                id: fieldSlot

                width: parent.width
                height: childrenRect.height
            }

            Item {
                width: 1
                height: 6
            }

            Paragraph {
                width: parent.width
                height: Math.max(Theme.statusLine, implicitHeight)
                text: dialog.error
                color: Theme.window.danger
                line: Theme.statusLine
                font.pixelSize: Theme.statusSize
                horizontalAlignment: Text.AlignHCenter
                Accessible.role: Accessible.AlertMessage
                Accessible.name: dialog.error
                Accessible.ignored: dialog.error.length === 0
            }

            Item {
                width: 1
                height: 14
            }

            Row {
                id: buttons

                readonly property int each: (width - spacing) / 2

                width: parent.width
                spacing: 10

                PushButton {
                    width: buttons.each
                    isInDialog: true
                    text: qsTr("Cancel")
                    onClicked: dialog.cancel()
                }

                PushButton {
                    width: buttons.each
                    isInDialog: true
                    isPrimary: true
                    text: dialog.accept
                    enabled: dialog.canAccept
                    onClicked: dialog.accepted()
                }
            }
        }
    }
}
