import QtQuick
import Velmora.Views

// The picture and the time at the pointer, above the timeline.
Item {
    id: bubble

    required property MovieScreenModel movie
    readonly property real pictureHeight: picture.hasImage ? Math.round(Math.max(68, Math.min(120, width / picture.ratio))) : 0

    width: picture.hasImage ? 160 : time.implicitWidth + 24
    height: pictureHeight + Theme.captionLine + 10
    Accessible.ignored: true

    Shadow {
        x: -spread
        y: -spread + drop
        width: parent.width + 2 * spread
        height: parent.height + 2 * spread
        spread: 36
        drop: 12
        opacity: 0.42
    }

    Rectangle {
        anchors.fill: parent
        anchors.margins: -1
        radius: 11
        color: Theme.bubble
    }

    RoundedPicture {
        id: picture

        width: parent.width
        height: bubble.pictureHeight
        radius: 10
        roundsBottom: false
        image: bubble.movie.previewPicture
    }

    Words {
        id: time

        anchors.bottom: parent.bottom
        anchors.bottomMargin: 5
        anchors.horizontalCenter: parent.horizontalCenter
        line: Theme.captionLine
        text: bubble.movie.previewText
        color: "#FFFFFF"
        font.pixelSize: Theme.captionSize
        font.weight: Font.DemiBold
    }

    Rectangle {
        anchors.fill: parent
        anchors.margins: -1
        radius: 11
        color: "transparent"
        border.width: 1
        border.color: Theme.bubbleEdge
    }
}
