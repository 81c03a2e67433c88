import QtQuick
import Velmora.Views

// One line of text in a box as high as its line, cut at the end where it does not fit.
Text {
    id: words

    property int line: Theme.bodyLine

    height: line
    color: Theme.window.text
    font.pixelSize: Theme.bodySize
    elide: Text.ElideRight
    maximumLineCount: 1
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter
}
