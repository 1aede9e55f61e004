import QtQuick 2.0
import org.freedesktop.gstreamer.GLVideoItem 1.0

Item {
    GstGLVideoItem {
        objectName: "videoItem"

        function setTransformation(mirror, rotation) {}
    }

    Rectangle {
        objectName: "waitItemCamera"
        color: "gray"
    }
}
