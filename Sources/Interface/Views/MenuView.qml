import QtQuick
import Velmora.Views

// The rows of a menu that scroll where there is no room for all.
ListView {
    id: list

    property MenuRows rows: null
    property int lowest: 44
    property int current: -1

    signal pointed(int index)
    signal chosen(int index)

    clip: contentHeight > height
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentHeight > height
    currentIndex: -1
    model: rows
}
