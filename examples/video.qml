// What the library shows of a video input. It looks for this file by its name in the working folder,
// and in it for the two items by theirs.
import QtQuick 2.0
import org.freedesktop.gstreamer.GLVideoItem 1.0

Item {
    GstGLVideoItem {
        id: video
        objectName: "videoItem"

        property bool mirrored: false
        property int turn: 0

        // Called by the library with what setMirror() and setRotation() were given. For a quarter
        // turn it exchanges width and height; turned around its middle, which is moved onto that of
        // the item that carries it, the picture fills that again.
        function setTransformation(mirror, rotation) {
            mirrored = mirror !== 0
            turn = rotation
        }

        transform: [
            Scale { origin.x: video.width / 2; xScale: video.mirrored ? -1 : 1 },
            Rotation { origin.x: video.width / 2; origin.y: video.height / 2; angle: video.turn },
            Translate {
                x: video.parent ? (video.parent.width - video.width) / 2 : 0
                y: video.parent ? (video.parent.height - video.height) / 2 : 0
            }
        ]
    }

    // Covers the place of the picture while there is none.
    Rectangle {
        objectName: "waitItemCamera"
        color: "#203040"
    }
}
