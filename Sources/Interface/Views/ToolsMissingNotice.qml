import QtQuick
import Velmora.Views
import QtQuick.Templates as T

// Says that the media tools are missing, and how to get them.
Rectangle {
    id: notice

    readonly property string command: "sudo apt install ffmpeg"

    implicitHeight: column.implicitHeight + 24
    radius: 12
    color: Theme.warnFill
    Accessible.role: Accessible.AlertMessage
    Accessible.name: message.text

    Symbol {
        id: sign

        anchors.left: parent.left
        anchors.leftMargin: 14
        y: 12
        width: 20
        height: 20
        name: "warning"
        color: Theme.window.warning
    }

    Column {
        id: column

        anchors.left: sign.right
        anchors.leftMargin: 12
        anchors.right: parent.right
        anchors.rightMargin: 14
        y: 12
        spacing: 8

        Paragraph {
            id: message

            width: parent.width
            text: qsTr("ffmpeg isn't installed, so movies can't be prepared yet.")
            color: Theme.window.text
            horizontalAlignment: Text.AlignLeft
        }

        T.AbstractButton {
            id: chip

            implicitWidth: Math.min(row.implicitWidth + 24, parent.width)
            implicitHeight: Math.max(36, Theme.bodyLine + 16)
            focusPolicy: Qt.StrongFocus
            hoverEnabled: true
            Accessible.name: copied.running ? qsTr("Copied") : qsTr("Copy the command %1").arg(notice.command)
            Accessible.onPressAction: chip.clicked()
            Keys.onReturnPressed: chip.clicked()
            Keys.onEnterPressed: chip.clicked()
            onClicked: {
                Appearance.copy(notice.command);
                copied.restart();
            }

            background: ControlGround {
                radius: 8
                color: Qt.rgba(Theme.window.text.r, Theme.window.text.g, Theme.window.text.b, 0.09)
                inks: Theme.window
                words: Theme.window.text
                isHovered: chip.hovered
                isPressed: chip.pressed
                hasFocus: chip.visualFocus
            }

            contentItem: Item {
                Row {
                    id: row

                    anchors.centerIn: parent
                    spacing: 8
                    LayoutMirroring.enabled: false

                    Words {
                        text: notice.command
                        font.family: "monospace"
                        font.pixelSize: Theme.statusSize
                    }

                    Symbol {
                        anchors.verticalCenter: parent.verticalCenter
                        width: 16
                        height: 16
                        name: copied.running ? "check" : "copy"
                        color: copied.running ? Theme.window.accent : Theme.window.text2
                    }
                }
            }

            HelpTip {
                text: copied.running ? qsTr("Copied") : qsTr("Copy")
                visible: chip.hovered && !chip.pressed
            }

            Timer {
                id: copied

                interval: 2000
            }
        }
    }
}
