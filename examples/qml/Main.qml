// Sign, undo, clear and save from QML alone: Done saves signature.png, strokes.json (the strokes) and
// record.json (the record file). Every control is reachable with Tab and pressed with Space or Return.
// Offscreen (as CI runs it), the window signs by itself: it loads two strokes, undoes one and is done.
import QtQuick
import Scrivlet

Window {
    id: window
    width: 600; height: 400; visible: true
    title: "Sign"
    readonly property bool offscreen: Qt.platform.pluginName === "offscreen"

    component ActionButton: Rectangle {
        id: button
        property alias text: label.text
        signal clicked()
        width: 110; height: 36; radius: 6
        color: enabled ? (activeFocus ? "#1e4e8c" : "#2b6cb0") : "#a0aec0"
        border { width: activeFocus ? 3 : 0; color: "#f6ad55" }
        activeFocusOnTab: true
        Accessible.role: Accessible.Button
        Accessible.name: text
        Accessible.onPressAction: clicked()
        Keys.onSpacePressed: clicked()
        Keys.onReturnPressed: clicked()
        Text { id: label; anchors.centerIn: parent; color: "white"; font.pixelSize: 16 }
        MouseArea { anchors.fill: parent; onClicked: button.clicked() }
    }

    SignatureArea {
        id: area
        anchors { fill: parent; bottomMargin: 56 }
        focus: true
        minWidth: 1
        dotSize: 5
        resizePolicy: SignatureArea.ScaleInk
        onSignatureReady: (record) => {
            const saved = record.save("signature.png") && record.save("strokes.json", "strokes")
                          && record.save("record.json", "record")
            status.text = saved ? "Saved signature.png, strokes.json and record.json (" + record.hash + ")"
                                : "Could not save the signature"
            console.log(status.text)
            if (window.offscreen) Qt.exit(saved ? 0 : 1)
        }
        onSignedNothing: {
            status.text = "Nothing was signed."
            if (window.offscreen) Qt.exit(1)
        }
    }

    Row {
        anchors { bottom: parent.bottom; horizontalCenter: parent.horizontalCenter; margins: 10 }
        spacing: 10
        ActionButton { text: "Undo"; enabled: area.canUndo; onClicked: area.undo() }
        ActionButton { text: "Clear"; enabled: !area.empty; onClicked: area.clear() }
        ActionButton { text: "Done"; onClicked: area.done() }
    }
    Text {
        id: status
        anchors { left: parent.left; top: parent.top; margins: 8 }
        text: area.empty ? "Sign above the line" : area.strokeCount === 1 ? "1 stroke" : area.strokeCount + " strokes"
        color: "#4a5568"
    }

    // Two strokes as a strokes document would hold them: a rising line and a tap.
    Timer {
        running: window.offscreen; interval: 100
        onTriggered: {
            const point = (x, y, t, id) => ({x: x, y: y, vx: 0, vy: 0, ax: 0, ay: 0, t: t, azimuth: 0,
                                             altitude: 1.5707963705062866, pressure: 0.5, diameter: 3, id: id})
            const line = [], tap = [point(500, 200, 3, 200), point(500, 200, 3.02, 201)]
            for (let i = 0; i < 30; ++i)
                line.push(point(80 + 12 * i, 260 - 40 * Math.sin(i / 5), 1 + i / 100, 100 + i))
            area.strokesJson = JSON.stringify({format: "scrivlet-strokes", version: 1, strokes: [line, tap]})
            area.undo()
            if (area.strokeCount !== 1 || !area.canRedo) Qt.exit(1)
            area.done()
        }
    }
}
