import QtQuick
import Velmora.Views

// The picture in the middle: the poster, the frame that a hand on the timeline points at, or what the player
// shows. It keeps its own ratio inside its box.
Item {
    id: still

    required property MovieScreenModel movie
    property Inks inks: Theme.window
    // Given by the window: shows the player's own picture while it is visible. Its implicit size is empty until
    // there is something to see.
    property Item liveLayer: null
    readonly property bool showsLive: movie.showsLiveFrame && liveLayer !== null && !movie.isDragging
    readonly property bool hasLive: showsLive && liveLayer.implicitHeight > 0
    readonly property bool hasPicture: picture.hasImage || hasLive
    readonly property real ratio: picture.hasImage ? picture.ratio : hasLive ? liveLayer.implicitWidth / liveLayer.implicitHeight : 16 / 9
    readonly property bool isUnderPointer: pointer.hovered
    readonly property real pictureWidth: Math.round(Math.min(width, height * ratio))
    readonly property real pictureHeight: Math.round(Math.min(height, width / ratio))

    Item {
        id: box

        anchors.centerIn: parent
        width: still.pictureWidth
        height: still.pictureHeight
        scale: still.isUnderPointer && still.movie.canPressStill ? 1.02 : 1
        Accessible.ignored: true

        Behavior on scale {
            NumberAnimation { duration: Theme.hoverMotion; easing.type: Easing.BezierSpline; easing.bezierCurve: Theme.lively }
        }

        Shadow {
            x: -spread
            y: -spread + drop
            width: parent.width + 2 * spread
            height: parent.height + 2 * spread
            opacity: 0.38
            visible: still.hasPicture
        }

        Item {
            anchors.fill: parent
            opacity: still.movie.stillOpacity

            Behavior on opacity {
                NumberAnimation { duration: Theme.modeMotion; easing.type: Easing.BezierSpline; easing.bezierCurve: Theme.settling }
            }

            Rectangle {
                anchors.fill: parent
                radius: 10
                visible: !still.hasPicture
                border.width: 1
                border.color: Theme.line

                gradient: Gradient {
                    GradientStop { position: 0; color: Theme.raised }
                    GradientStop { position: 1; color: Theme.surface }
                }
            }

            Symbol {
                anchors.centerIn: parent
                width: 26
                height: 26
                name: "film"
                color: Theme.window.text2
                visible: !still.hasPicture && !disc.visible
            }

            RoundedPicture {
                id: picture

                anchors.fill: parent
                image: still.movie.stillPicture
            }

            Item {
                anchors.fill: parent
                visible: still.showsLive
                children: still.liveLayer ? [still.liveLayer] : []
            }

            // The same around both.
            Rectangle {
                anchors.fill: parent
                radius: 10
                visible: still.hasPicture
                color: "transparent"
                border.width: 1
                border.color: Theme.imagery.line
            }
        }

        Rectangle {
            id: disc

            anchors.centerIn: parent
            width: 64
            height: 64
            radius: 32
            color: Theme.disc
            opacity: still.movie.discSymbol.length > 0 && !still.movie.isDragging && (!still.movie.isDiscUnderPointerOnly || still.isUnderPointer) ? 1 : 0
            visible: opacity > 0

            Behavior on opacity {
                NumberAnimation { duration: Theme.quick; easing.type: Easing.OutCubic }
            }

            Symbol {
                anchors.centerIn: parent
                width: 30
                height: 30
                name: still.movie.discSymbol
                color: "#FFFFFF"
            }
        }

        HoverHandler {
            id: pointer
        }

        TapHandler {
            enabled: still.movie.canPressStill
            onTapped: still.movie.pressStill()
        }
    }
}
