// A signing area and a Done button that saves signature.png; offscreen, Done is pressed by itself.
import QtQuick
import Scrivlet 1.0

Window {
    width: 600; height: 360; visible: true
    SignatureArea {
        id: area
        anchors { fill: parent; bottomMargin: 48 }
        onSignatureReady: (record) => { console.log("Signed:", record.hash); Qt.quit() }
        onSignedNothing: { console.log("Nothing was signed."); Qt.quit() }
    }
    Rectangle {
        anchors { bottom: parent.bottom; horizontalCenter: parent.horizontalCenter; margins: 8 }
        width: 120; height: 32; radius: 6; color: "#2b6cb0"
        Text { anchors.centerIn: parent; text: "Done"; color: "white" }
        MouseArea { anchors.fill: parent; onClicked: area.done() }
    }
    Timer { running: Qt.platform.pluginName === "offscreen"; interval: 100; onTriggered: area.done() }
}
