import QtQuick
import Velmora.Views

// How far the preparation is; a segment that crosses while that is unknown.
Item {
    id: progress

    property Inks inks: Theme.window
    // 0…1; negative when unknown.
    property real value: -1
    readonly property bool isKnown: value >= 0
    readonly property real minimumValue: 0
    readonly property real maximumValue: 1

    implicitHeight: 36
    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("Preparing the movie")

    Rectangle {
        id: track

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        height: 4
        radius: 2
        color: progress.inks.track
        clip: true

        Rectangle {
            id: segment

            property real way: 0.5

            x: progress.isKnown ? 0 : Math.max(0, (track.width + length) * way - length)
            width: progress.isKnown ? track.width * Math.min(1, progress.value) : Math.min(track.width, (track.width + length) * way) - x
            height: parent.height
            radius: 2
            color: progress.inks.accent

            readonly property real length: track.width * 0.3

            NumberAnimation {
                target: segment
                property: "way"
                running: Theme.animates && !progress.isKnown && progress.visible
                loops: Animation.Infinite
                from: 0
                to: 1
                duration: 1600
                easing.type: Easing.InOutSine
            }
        }
    }
}
