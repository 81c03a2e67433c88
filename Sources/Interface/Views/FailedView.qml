import QtQuick
import Velmora.Views

// The movie could not be made ready: why, and what can be done.
FocusScope {
    id: screen

    required property MovieScreenModel movie
    property Inks inks: Theme.window
    readonly property int longestMessage: 6 * Theme.bodyLine
    readonly property bool stacks: choose.implicitWidth + 12 + transcode.implicitWidth > block.width

    Column {
        id: block

        anchors.centerIn: parent
        width: Math.min(Theme.wordsWidth, screen.width - 2 * Theme.padding)

        Symbol {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 34
            height: 34
            name: "warning"
            color: screen.inks.warning
        }

        Item {
            width: 1
            height: 14
        }

        Paragraph {
            id: title

            width: parent.width
            text: qsTr("Couldn't get this movie ready")
            color: screen.inks.text
            line: Theme.titleLine
            font.pixelSize: Theme.titleSize
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.AlertMessage
            Accessible.name: title.text + " " + message.text
        }

        Item {
            width: 1
            height: 6
        }

        Flickable {
            width: parent.width
            height: Math.min(message.implicitHeight, screen.longestMessage)
            contentHeight: message.implicitHeight
            clip: contentHeight > height
            interactive: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds

            Paragraph {
                id: message

                width: parent.width
                text: screen.movie.failureMessage
                color: screen.inks.text2
                horizontalAlignment: Text.AlignHCenter
            }
        }

        Item {
            width: 1
            height: 22
        }

        Grid {
            anchors.horizontalCenter: parent.horizontalCenter
            columns: screen.stacks ? 1 : 2
            spacing: 12
            horizontalItemAlignment: Grid.AlignHCenter

            PushButton {
                id: choose

                focus: !screen.movie.canTranscode
                inks: screen.inks
                isPrimary: !screen.movie.canTranscode
                text: qsTr("Choose Another Movie…")
                onClicked: screen.movie.chooseRequested()
            }

            PushButton {
                id: transcode

                focus: screen.movie.canTranscode
                visible: screen.movie.canTranscode
                inks: screen.inks
                isPrimary: true
                text: qsTr("Re-encode and Try Again")
                onClicked: screen.movie.transcodeRequested()
            }
        }
    }
}
