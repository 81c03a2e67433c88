import QtQuick
import Velmora.Views

// The poster, blurred and darkened, behind everything. A new one fades in over the old one.
Item {
    id: backdrop

    required property MovieScreenModel movie
    property bool showsFirst: false

    function take() {
        const next = showsFirst ? second : first;
        next.image = movie.poster;
        if (next.ready || !movie.hasPoster)
            turn();
    }

    function turn() {
        showsFirst = !showsFirst;
    }

    opacity: movie.hasPoster ? 1 : 0
    visible: opacity > 0
    Component.onCompleted: take()

    Behavior on opacity {
        NumberAnimation { duration: Theme.backdropMotion }
    }

    Connections {
        target: backdrop.movie

        function onPosterChanged() {
            backdrop.take();
        }
    }

    BlurredPicture {
        id: first

        anchors.fill: parent
        opacity: backdrop.showsFirst ? 1 : 0
        onReadyChanged: {
            if (ready && !backdrop.showsFirst)
                backdrop.turn();
        }

        Behavior on opacity {
            NumberAnimation { duration: Theme.backdropMotion }
        }
    }

    BlurredPicture {
        id: second

        anchors.fill: parent
        opacity: backdrop.showsFirst ? 0 : 1
        onReadyChanged: {
            if (ready && backdrop.showsFirst)
                backdrop.turn();
        }

        Behavior on opacity {
            NumberAnimation { duration: Theme.backdropMotion }
        }
    }

    Rectangle {
        anchors.fill: parent

        gradient: Gradient {
            GradientStop { position: 0; color: Theme.dimTop }
            GradientStop { position: 0.5; color: Theme.dimMiddle }
            GradientStop { position: 1; color: Theme.dimBottom }
        }
    }
}
