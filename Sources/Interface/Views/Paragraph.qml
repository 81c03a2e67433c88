import QtQuick
import Velmora.Views

// Wrapped text whose lines stand as far apart as they are designed to.
Item {
    id: paragraph

    property alias text: words.text
    property alias color: words.color
    property alias horizontalAlignment: words.horizontalAlignment
    property alias font: words.font
    property int line: Theme.bodyLine
    property int widest: Theme.wordsWidth

    implicitWidth: Math.min(words.implicitWidth, widest)
    implicitHeight: words.lineCount * line

    FontMetrics {
        id: metrics
        font: words.font
    }

    Text {
        id: words

        y: Math.round((paragraph.line - metrics.height) / 2)
        width: paragraph.width
        font.pixelSize: Theme.bodySize
        lineHeight: paragraph.line
        lineHeightMode: Text.FixedHeight
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
    }
}
