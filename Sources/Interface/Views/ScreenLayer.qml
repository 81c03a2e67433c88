import QtQuick
import Velmora.Views

// One of the screens that a window changes between. The old one fades and grows a little, the new one comes
// up to its size.
FocusScope {
    id: layer

    required property bool isShown
    property int motion: Theme.phaseMotion
    property real growth: 0

    anchors.fill: parent
    visible: opacity > 0
    enabled: isShown
    focus: isShown
    opacity: isShown ? 1 : 0
    scale: 1 + growth
    onIsShownChanged: {
        if (isShown)
            forceActiveFocus();
    }

    states: State {
        name: "shown"
        when: layer.isShown
    }

    transitions: [
        Transition {
            to: "shown"
            NumberAnimation { target: layer; property: "growth"; from: -0.015; to: 0; duration: layer.motion; easing.type: Easing.BezierSpline; easing.bezierCurve: Theme.settling }
        },
        Transition {
            from: "shown"
            NumberAnimation { target: layer; property: "growth"; from: 0; to: 0.015; duration: layer.motion; easing.type: Easing.BezierSpline; easing.bezierCurve: Theme.settling }
        }
    ]

    Behavior on opacity {
        NumberAnimation { duration: layer.motion; easing.type: Easing.BezierSpline; easing.bezierCurve: Theme.settling }
    }
}
