import QtQuick 2.0
import org.freedesktop.gstreamer.GLVideoItem 1.0

Item {
    GstGLVideoItem {
        id: video
        objectName: "videoItem"

        property int mirroring: 0
        property int turning: 0

        function setTransformation(mirror, rotation) {
            mirroring = mirror
            turning = rotation
        }

        // The picture of an item that was sized for a quarter turn covers the same area as without:
        // it is turned around its corner and moved back.
        transform: [
            Scale { origin.x: video.width / 2; xScale: video.mirroring === 0 ? 1 : -1 },
            Rotation { angle: video.turning },
            Translate {
                x: video.turning === 90 ? video.height : video.turning === 180 ? video.width : 0
                y: video.turning === 180 ? video.height : video.turning === 270 ? video.width : 0
            }
        ]
    }

    Rectangle {
        objectName: "waitItemCamera"
        color: "#b41ec8"  // waitItemColour
    }
}
