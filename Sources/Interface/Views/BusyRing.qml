import QtQuick
import Velmora.Views

Symbol {
    id: ring

    name: "busy"

    RotationAnimation on rotation {
        running: Theme.animates && ring.visible
        from: 0
        to: 360
        duration: 900
        loops: Animation.Infinite
    }
}
