import QtQuick
import Velmora.Views

// All that a window shows.
FocusScope {
    id: content

    required property MovieScreenModel movie
    required property RoutePickerModel routes
    // The rows of the main menu; without them there is no button for it.
    property MenuRows mainMenu: null
    // Shows the player's own picture, in the still and while it is visible there.
    property Item liveLayer: null
    readonly property bool isTargeted: drop.containsDrag
    // While it is, space and arrows belong to what is open.
    readonly property bool isModal: mainPopup.visible || (movieScreen !== null && movieScreen.isModal)
    readonly property bool isEmpty: movie.screen === MovieScreenModel.Empty
    readonly property Inks inks: movie.hasPoster && !isEmpty ? Theme.imagery : Theme.window
    // Null until there has been a movie, or a first picture of the window.
    readonly property MovieScreen movieScreen: movieLoader.item as MovieScreen
    property bool showsDrop: isTargeted
    property bool hasAppeared: false

    function openMainMenu() {
        if (mainMenu)
            mainPopup.open();
    }

    focus: true
    implicitWidth: 640
    implicitHeight: 460
    LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true

    Rectangle {
        anchors.fill: parent

        gradient: Gradient {
            GradientStop { position: 0; color: Theme.windowTop }
            GradientStop { position: 1; color: Theme.windowBottom }
        }
    }

    Backdrop {
        anchors.fill: parent
        movie: content.movie
    }

    FocusScope {
        id: screens

        anchors.fill: parent
        focus: true
        opacity: content.showsDrop ? 0 : 1

        Behavior on opacity {
            NumberAnimation { duration: Theme.dragMotion; easing.type: Easing.OutCubic }
        }

        ScreenLayer {
            isShown: content.movie.screen === MovieScreenModel.Empty
            motion: Theme.screenMotion

            EmptyState {
                anchors.fill: parent
                focus: true
                movie: content.movie
            }
        }

        ScreenLayer {
            isShown: content.movie.screen === MovieScreenModel.Failed

            FailedView {
                anchors.fill: parent
                focus: true
                movie: content.movie
                inks: content.inks
            }
        }

        ScreenLayer {
            id: movieLayer

            isShown: content.movie.screen === MovieScreenModel.Movie
            motion: Theme.screenMotion

            // A third of what a window takes to appear. Without a movie it comes after that, piece by piece.
            Loader {
                id: movieLoader

                readonly property bool isWanted: movieLayer.isShown || content.hasAppeared

                function load() {
                    if (!isWanted || status !== Loader.Null)
                        return;
                    setSource("MovieScreen.qml", {
                        focus: true,
                        movie: content.movie,
                        routes: content.routes,
                        inks: content.inks
                    });
                }

                anchors.fill: parent
                focus: true
                asynchronous: !movieLayer.isShown
                onIsWantedChanged: load()
                onLoaded: {
                    const screen = item as MovieScreen;
                    screen.inks = Qt.binding(() => content.inks);
                    screen.liveLayer = Qt.binding(() => content.liveLayer);
                }
                Component.onCompleted: load()
            }

            Connections {
                target: content.hasAppeared ? null : content.Window.window

                function onFrameSwapped() {
                    content.hasAppeared = true;
                }
            }
        }

        IconButton {
            id: mainButton

            anchors.right: parent.right
            anchors.rightMargin: 8
            y: 8
            implicitWidth: 36
            implicitHeight: 36
            visible: content.mainMenu !== null
            inks: content.inks
            symbol: "menu"
            symbolSize: 20
            isOpen: mainPopup.visible
            help: qsTr("Main Menu (F10)")
            name: qsTr("Main Menu")
            onClicked: content.openMainMenu()
        }
    }

    MenuPopup {
        id: mainPopup

        opener: mainButton
        name: mainButton.name
        rows: content.mainMenu
        opensDown: true
        lowest: 36
    }

    DropOverlay {
        anchors.fill: parent
        opacity: content.showsDrop ? 1 : 0
        visible: opacity > 0

        Behavior on opacity {
            NumberAnimation { duration: Theme.dragMotion; easing.type: Easing.OutCubic }
        }
    }

    DropArea {
        id: drop

        anchors.fill: parent
        keys: ["text/uri-list"]
        onDropped: event => {
            event.accepted = content.movie.drop(event.urls);
        }
    }
}
