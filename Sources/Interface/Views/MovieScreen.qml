import QtQuick
import Velmora.Views

// The movie: its picture, its title, what is being done with it, and the controls.
FocusScope {
    id: screen

    required property MovieScreenModel movie
    required property RoutePickerModel routes
    property Inks inks: Theme.window
    property Item liveLayer: null
    readonly property bool isModal: media.visible || picker.isModal
    readonly property alias timeline: timeline
    readonly property alias playButton: play
    readonly property alias mediaButton: mediaButton
    readonly property alias airPlayButton: airPlay
    readonly property alias picker: picker

    function openMediaMenu() {
        media.open();
    }

    Item {
        id: block

        readonly property int below: 12 + Theme.titleLine + 2 + Theme.statusLine + 8 + timeline.height + 4 + controls.height

        anchors.centerIn: parent
        width: Math.min(Theme.columnWidth, screen.width - 2 * Theme.padding)
        height: still.pictureHeight + below

        Still {
            id: still

            // Clear of the button at the top.
            width: Math.min(screen.width - 104, 960)
            height: Math.max(90, screen.height - 48 - block.below)
            x: (parent.width - width) / 2
            y: (pictureHeight - height) / 2
            movie: screen.movie
            inks: screen.inks
            liveLayer: screen.liveLayer
        }

        Words {
            id: title

            anchors.horizontalCenter: parent.horizontalCenter
            y: still.pictureHeight + 12
            width: Math.min(parent.width, Theme.wordsWidth)
            line: Theme.titleLine
            text: screen.movie.title
            color: screen.inks.text
            font.pixelSize: Theme.titleSize
            font.weight: Font.DemiBold
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: Theme.smallTitleSize
            horizontalAlignment: Text.AlignHCenter
            opacity: timeline.showsBubble ? 0 : 1
            Accessible.role: Accessible.Heading
            Accessible.name: screen.movie.title

            Behavior on opacity {
                NumberAnimation { duration: Theme.quick; easing.type: Easing.OutCubic }
            }

            HoverHandler {
                id: titlePointer
            }

            HelpTip {
                text: screen.movie.title
                visible: titlePointer.hovered && title.truncated
            }
        }

        Row {
            id: status

            readonly property color color: screen.movie.statusTone === MovieScreenModel.Warning ? screen.inks.warning : screen.movie.statusTone === MovieScreenModel.Plain ? screen.inks.text : screen.inks.text2
            readonly property string symbol: screen.movie.statusSymbol

            anchors.horizontalCenter: parent.horizontalCenter
            y: title.y + title.height + 2
            spacing: 6
            opacity: title.opacity
            Accessible.role: Accessible.AlertMessage
            Accessible.name: screen.movie.status

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                width: 16
                height: 16
                name: status.symbol
                color: screen.movie.statusTone === MovieScreenModel.Warning ? screen.inks.warning : screen.inks.accent
                visible: name.length > 0 && name !== "busy"
            }

            BusyRing {
                anchors.verticalCenter: parent.verticalCenter
                width: 16
                height: 16
                color: screen.inks.accent
                visible: status.symbol === "busy"
            }

            Words {
                id: statusWords

                width: Math.min(implicitWidth, block.width - (status.symbol.length > 0 ? 22 : 0))
                line: Theme.statusLine
                text: screen.movie.status
                color: status.color
                font.pixelSize: Theme.statusSize
                Accessible.ignored: true

                HoverHandler {
                    id: statusPointer
                }

                HelpTip {
                    text: screen.movie.status
                    visible: statusPointer.hovered && statusWords.truncated
                }
            }
        }

        TimelineRow {
            id: timeline

            anchors.left: parent.left
            anchors.right: parent.right
            y: title.y + title.height + 2 + Theme.statusLine + 8
            movie: screen.movie
            inks: screen.inks
        }

        Item {
            id: controls

            anchors.left: parent.left
            anchors.right: parent.right
            y: timeline.y + timeline.height + 4
            height: 52

            IconButton {
                id: mediaButton

                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                implicitWidth: 56
                inks: screen.inks
                symbol: "subtitles"
                canPress: screen.movie.canChooseTracks
                isOpen: media.visible
                help: qsTr("Audio and subtitles")
                onClicked: media.open()
            }

            Item {
                anchors.centerIn: parent
                width: transport.width
                height: parent.height
                LayoutMirroring.enabled: false
                LayoutMirroring.childrenInherit: true

                Row {
                    id: transport

                    spacing: 20

                    IconButton {
                        id: back

                        anchors.verticalCenter: parent.verticalCenter
                        inks: screen.inks
                        symbol: "backward"
                        canPress: screen.movie.canControl
                        help: qsTr("Back 10 seconds (←)")
                        name: qsTr("Back 10 seconds")
                        onClicked: screen.movie.seekBy(-10)
                    }

                    PlayButton {
                        id: play

                        inks: screen.inks
                        symbol: screen.movie.playSymbol
                        isSolid: screen.movie.isPlaySolid
                        canPress: screen.movie.canPlay
                        help: screen.movie.playHelp
                        name: screen.movie.playName
                        onClicked: screen.movie.playRequested()
                    }

                    IconButton {
                        id: forward

                        anchors.verticalCenter: parent.verticalCenter
                        inks: screen.inks
                        symbol: "forward"
                        canPress: screen.movie.canControl
                        help: qsTr("Forward 10 seconds (→)")
                        name: qsTr("Forward 10 seconds")
                        onClicked: screen.movie.seekBy(10)
                    }
                }
            }

            IconButton {
                id: airPlay

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                implicitWidth: 56
                inks: screen.inks
                symbol: "airplay"
                color: screen.movie.hasDevice ? screen.inks.accent : screen.inks.text
                canPress: screen.movie.canAirPlay
                isLit: screen.movie.isAirPlayLit
                isOpen: picker.isOpen
                help: screen.movie.airPlayHelp
                onClicked: screen.movie.pickRouteRequested()
            }
        }

        Bubble {
            readonly property real middle: timeline.scrubber.x + timeline.scrubber.pointedX
            readonly property real leftmost: 12 - block.x
            readonly property real rightmost: screen.width - 12 - block.x - width

            x: Math.round(Math.max(leftmost, Math.min(rightmost, middle - width / 2)))
            y: timeline.y - height - 3
            movie: screen.movie
            visible: timeline.showsBubble
        }
    }

    MenuPopup {
        id: media

        opener: mediaButton
        name: mediaButton.name
        rows: screen.movie.mediaRows
        isAtLeadingEdge: true
        lowest: 36
    }

    RoutePicker {
        id: picker

        routes: screen.routes
        opener: airPlay
    }
}
