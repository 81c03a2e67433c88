import QtQuick
import QtQuick.Dialogs
import QtQuick.Window
import Velmora.Application
import Velmora.Views

// Asks whether a file or a folder is to be chosen, and shows the desktop's dialog for it.
Window {
    id: window

    required property MoviePicker picker

    width: 560
    height: 420
    title: picker.title
    modality: Qt.ApplicationModal
    flags: Qt.Dialog
    color: Theme.windowBottom
    onClosing: picker.cancel()

    Column {
        anchors.centerIn: parent
        width: Math.min(Theme.wordsWidth, parent.width - 2 * Theme.padding)
        spacing: 18

        Paragraph {
            width: parent.width
            text: window.picker.message
            color: Theme.window.text2
            horizontalAlignment: Text.AlignHCenter
        }

        Row {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 12

            PushButton {
                focus: true
                isPrimary: true
                text: qsTr("Choose a File…")
                onClicked: files.open()
            }

            PushButton {
                text: qsTr("Choose a Folder…")
                onClicked: folders.open()
            }
        }
    }

    Shortcut {
        sequence: "Esc"
        onActivated: window.picker.cancel()
    }

    FileDialog {
        id: files

        title: window.picker.title
        nameFilters: window.picker.nameFilters
        onAccepted: window.picker.choose(selectedFile)
    }

    FolderDialog {
        id: folders

        title: window.picker.title
        onAccepted: window.picker.choose(selectedFolder)
    }
}
