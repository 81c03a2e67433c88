import QtQuick
import Velmora.Views

// Where the movie is; while it is being prepared, how far that is. Never mirrored: time runs left to right.
Item {
    id: row

    required property MovieScreenModel movie
    property Inks inks: Theme.window
    readonly property alias scrubber: scrubber
    readonly property bool showsBubble: movie.isPointing && scrubber.canSeek

    height: Math.max(36, Theme.captionLine + 20)
    LayoutMirroring.enabled: false
    LayoutMirroring.childrenInherit: true

    TextMetrics {
        id: widest

        font.pixelSize: Theme.captionSize
        text: row.movie.widestTime
    }

    TextMetrics {
        id: widestPercent

        font.pixelSize: Theme.captionSize
        text: qsTr("%1%").arg(100)
    }

    Item {
        anchors.fill: parent
        visible: !row.movie.isPreparing

        Words {
            id: elapsed

            anchors.verticalCenter: parent.verticalCenter
            width: Math.ceil(widest.advanceWidth)
            line: Theme.captionLine
            text: row.movie.elapsedText
            color: row.inks.text2
            font.pixelSize: Theme.captionSize
            horizontalAlignment: Text.AlignRight
            elide: Text.ElideNone
            Accessible.ignored: true
        }

        Scrubber {
            id: scrubber

            anchors.left: elapsed.right
            anchors.right: remaining.left
            anchors.margins: 10
            height: parent.height
            movie: row.movie
            inks: row.inks
        }

        Words {
            id: remaining

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            width: elapsed.width
            line: Theme.captionLine
            text: row.movie.remainingText
            color: row.inks.text2
            font.pixelSize: Theme.captionSize
            horizontalAlignment: Text.AlignLeft
            elide: Text.ElideNone
            Accessible.ignored: true
        }
    }

    Item {
        anchors.fill: parent
        visible: row.movie.isPreparing

        Words {
            id: percent

            anchors.verticalCenter: parent.verticalCenter
            width: text.length > 0 ? Math.max(36, Math.ceil(widestPercent.advanceWidth)) : 0
            line: Theme.captionLine
            text: row.movie.percentText
            color: row.inks.text2
            font.pixelSize: Theme.captionSize
            horizontalAlignment: Text.AlignRight
            elide: Text.ElideNone
        }

        ProgressTrack {
            anchors.left: percent.right
            anchors.leftMargin: percent.width > 0 ? 10 : 0
            anchors.right: timeLeft.left
            anchors.rightMargin: timeLeft.width > 0 ? 10 : 0
            height: parent.height
            inks: row.inks
            value: row.movie.progress
            Accessible.description: row.movie.percentText
        }

        Words {
            id: timeLeft

            anchors.right: cancel.left
            anchors.rightMargin: 4
            anchors.verticalCenter: parent.verticalCenter
            line: Theme.captionLine
            text: row.movie.timeLeftText
            color: row.inks.text2
            font.pixelSize: Theme.captionSize
            elide: Text.ElideNone
        }

        // Its symbol ends where the column ends.
        IconButton {
            id: cancel

            anchors.right: parent.right
            anchors.rightMargin: -8
            anchors.verticalCenter: parent.verticalCenter
            implicitWidth: 36
            implicitHeight: 36
            inks: row.inks
            symbol: "close"
            symbolSize: 18
            help: qsTr("Cancel Preparing (Ctrl+.)")
            name: qsTr("Cancel Preparing")
            onClicked: row.movie.cancelRequested()
        }
    }
}
