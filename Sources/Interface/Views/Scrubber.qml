import QtQuick
import Velmora.Views

// The track of the timeline: where the movie is, where the pointer is, and a knob to hold.
Item {
    id: scrubber

    required property MovieScreenModel movie
    property Inks inks: Theme.window
    readonly property bool canSeek: movie.canControl && movie.duration > 0
    readonly property bool isTall: canSeek && (movie.isPointing || activeFocus)
    readonly property real pointedX: xOf(movie.pointedTime)
    // For screen readers, which set the value too.
    property real value: movie.position
    readonly property real minimumValue: 0
    readonly property real maximumValue: movie.duration
    readonly property real stepSize: 10

    function timeAt(place: real): real {
        return Math.max(0, Math.min(1, place / width)) * movie.duration;
    }

    // Whole pixels: a movie that goes on draws nothing anew until there is something to see.
    function xOf(time: real): real {
        return movie.duration > 0 ? Math.round(width * Math.min(1, time / movie.duration)) : 0;
    }

    enabled: canSeek
    activeFocusOnTab: true
    onValueChanged: {
        if (value === movie.position)
            return;
        movie.seekBy(value - movie.position);
        value = Qt.binding(() => movie.position);
    }
    Accessible.role: Accessible.Slider
    Accessible.name: qsTr("Timeline")
    Accessible.description: movie.spokenPosition
    Accessible.focusable: canSeek
    Accessible.onIncreaseAction: movie.seekBy(stepSize)
    Accessible.onDecreaseAction: movie.seekBy(-stepSize)

    Rectangle {
        id: track

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        height: scrubber.isTall ? 6 : 4
        radius: height / 2
        color: scrubber.inks.track

        Behavior on height {
            NumberAnimation { duration: Theme.quick; easing.type: Easing.OutCubic }
        }
    }

    Rectangle {
        id: played

        anchors.verticalCenter: parent.verticalCenter
        width: scrubber.xOf(scrubber.movie.position)
        height: track.height
        radius: track.radius
        color: scrubber.inks.accent
        opacity: scrubber.canSeek ? 1 : 0.55
        visible: width > 0
    }

    Rectangle {
        id: tick

        readonly property real time: scrubber.movie.isDragging ? scrubber.movie.moviePosition : scrubber.movie.pointedTime

        anchors.verticalCenter: parent.verticalCenter
        x: scrubber.xOf(time) - 1
        width: 2
        height: 12
        color: x < played.width ? scrubber.inks.tickOnPlayed : scrubber.inks.text
        opacity: 0.8
        visible: scrubber.movie.isPointing
    }

    Rectangle {
        id: knob

        anchors.verticalCenter: parent.verticalCenter
        x: played.width - width / 2
        width: scrubber.movie.isDragging ? 18 : 14
        height: width
        radius: width / 2
        color: "#FFFFFF"
        visible: scrubber.canSeek

        // Sets it off from whatever is bright below it.
        Rectangle {
            anchors.fill: parent
            anchors.margins: -1
            radius: width / 2
            color: "transparent"
            border.width: 1
            border.color: "#38000000"
        }

        FocusRing {
            visible: scrubber.activeFocus && !scrubber.movie.isDragging
            inks: scrubber.inks
            radius: knob.radius
        }
    }

    MouseArea {
        anchors.fill: parent
        enabled: scrubber.canSeek
        hoverEnabled: true
        preventStealing: true
        onPositionChanged: event => {
            if (pressed)
                scrubber.movie.drag(scrubber.timeAt(event.x));
            else
                scrubber.movie.point(scrubber.timeAt(event.x));
        }
        // A pointer that has jumped here rests without moving.
        onEntered: {
            if (!pressed)
                scrubber.movie.point(scrubber.timeAt(mouseX));
        }
        onPressed: event => scrubber.movie.drag(scrubber.timeAt(event.x))
        onReleased: {
            scrubber.movie.release();
            if (!containsMouse)
                scrubber.movie.unpoint();
        }
        onCanceled: {
            scrubber.movie.cancelDrag();
            scrubber.movie.unpoint();
        }
        onExited: scrubber.movie.unpoint()
    }
}
