// The scene of show_camera: the picture fills the item "place", and lines lie over it.
import QtQuick 2.0

Rectangle {
    width: 800
    height: 480
    color: "#101010"

    Item {
        objectName: "place"
        anchors.fill: parent
        anchors.margins: 20

        // Children of the item that carries the picture stay above it: here a line that helps to
        // keep the distance.
        Rectangle {
            width: parent.width
            height: 4
            y: parent.height * 3 / 4
            color: "#e02020"
        }
    }
}
