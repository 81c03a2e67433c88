import QtQuick
import Velmora.Views

// A window without a movie invites one.
FocusScope {
    id: screen

    required property MovieScreenModel movie
    readonly property alias chooseButton: choose
    readonly property bool isTight: height < 430 && notice.visible
    readonly property int gap: isTight ? 12 : 18

    Column {
        id: block

        anchors.horizontalCenter: parent.horizontalCenter
        y: Math.max(24, Math.round((14 + hints.y - height) / 2))
        width: Math.min(Theme.wordsWidth, screen.width - 2 * Theme.padding)

        Rectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            width: screen.height >= 640 ? 192 : screen.isTight ? 100 : 128
            height: width * 9 / 16
            radius: 10
            border.width: 1
            border.color: Theme.line
            Accessible.ignored: true

            gradient: Gradient {
                GradientStop { position: 0; color: Theme.raised }
                GradientStop { position: 1; color: Theme.surface }
            }

            Symbol {
                anchors.centerIn: parent
                width: 26
                height: 26
                name: "film"
                color: Theme.window.text2
            }
        }

        Item {
            width: 1
            height: screen.isTight ? 9 : 16
        }

        Paragraph {
            width: parent.width
            text: qsTr("Drop a movie here")
            color: Theme.window.text
            line: Theme.titleLine
            font.pixelSize: Theme.titleSize
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        Item {
            width: 1
            height: 4
        }

        Paragraph {
            width: parent.width
            text: qsTr("Any MKV or MP4, or the folder it came in.\nSubtitles next to the file come along.")
            color: Theme.window.text2
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        Item {
            width: 1
            height: screen.gap
        }

        PushButton {
            id: choose

            anchors.horizontalCenter: parent.horizontalCenter
            focus: true
            isPrimary: true
            text: qsTr("Choose Movie…")
            onClicked: screen.movie.chooseRequested()
        }

        Item {
            width: 1
            height: screen.gap
            visible: notice.visible
        }

        ToolsMissingNotice {
            id: notice

            width: parent.width
            visible: screen.movie.toolsMissing
        }
    }

    Flow {
        id: hints

        readonly property real oneLine: first.implicitWidth + spacing + second.implicitWidth

        anchors.bottom: parent.bottom
        anchors.bottomMargin: 24
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(oneLine, screen.width - 2 * Theme.padding)
        spacing: 24

        KeyHint {
            id: first

            keys: qsTr("Ctrl+O")
            text: qsTr("Open a movie")
        }

        KeyHint {
            id: second

            keys: qsTr("Ctrl+N")
            text: qsTr("New window, for a second TV")
        }
    }
}
