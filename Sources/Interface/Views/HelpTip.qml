import QtQuick
import Velmora.Views
import QtQuick.Templates as T

// What a control does, above it, for a pointer that rests there.
T.ToolTip {
    id: tip

    x: Math.round((parent.width - width) / 2)
    y: -height - 6
    margins: 6
    padding: 0
    delay: 600
    closePolicy: T.Popup.NoAutoClose
    implicitWidth: Math.min(contentItem.implicitWidth, 400)
    implicitHeight: contentItem.implicitHeight

    contentItem: Text {
        leftPadding: 10
        rightPadding: 10
        topPadding: 6
        bottomPadding: 6
        text: tip.text
        color: Theme.wordOnTip
        font.pixelSize: Theme.captionSize
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
    }

    background: Rectangle {
        radius: 8
        color: Theme.tip
        border.width: 1
        border.color: Theme.bubbleEdge
    }

    enter: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.quick; easing.type: Easing.OutCubic }
    }
    exit: Transition {
        NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.quick; easing.type: Easing.OutCubic }
    }
}
