pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Velmora.Application
import Velmora.Views

// The frame around a movie: what is in it, its commands' keys, and its messages.
T.ApplicationWindow {
    id: window

    required property MovieWindow controller
    // Space and the arrows are the popup's own then.
    readonly property bool isModal: content.isModal || message.visible

    width: 640
    height: 460
    minimumWidth: 520
    minimumHeight: 400
    color: Theme.windowBottom

    ContentView {
        id: content

        anchors.fill: parent
        movie: window.controller.movie
        routes: window.controller.routes
        mainMenu: window.controller.menu

        liveLayer: LiveLayer {
            anchors.fill: parent
            controller: window.controller
        }
    }

    MessageDialog {
        id: message

        controller: window.controller
    }

    Connections {
        target: window.controller

        function onMessageChanged() {
            message.open();
        }
    }

    Repeater {
        model: window.controller.commands

        Item {
            id: key

            required property int index
            required property string shortcut
            required property bool available
            required property bool repeats
            required property bool yieldsToPopups

            Shortcut {
                sequence: key.shortcut
                // The toolkit keeps a window's own shortcuts from it while a popup is open.
                context: Qt.ApplicationShortcut
                enabled: window.active && key.available && !(key.yieldsToPopups && window.isModal)
                autoRepeat: key.repeats
                onActivated: window.controller.commands.trigger(key.index)
            }
        }
    }

    Shortcut {
        sequence: "F10"
        autoRepeat: false
        onActivated: content.openMainMenu()
    }
}
