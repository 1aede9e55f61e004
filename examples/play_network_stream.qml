// The scene of play_network_stream: the picture, and below it a lamp that is green while the stream
// plays.
import QtQuick 2.0

Rectangle {
    property bool playing: false

    width: 800
    height: 480
    color: "#101010"

    Item {
        objectName: "place"
        width: parent.width
        height: parent.height - 30
    }

    Rectangle {
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: 5
        width: 20
        height: 20
        radius: 10
        color: parent.playing ? "#20c020" : "#c02020"
    }
}
