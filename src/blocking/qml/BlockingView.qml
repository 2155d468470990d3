import QtQuick
import Orvanta.Blocking
import Orvanta.Palette

/*
 * What covers a display while a blocked application is in front: a crown, a motto and a quotation over a slowly breathing
 * light, and one reply where there is something to reply to. It holds no state: all motion comes from the clock.
 */
FocusScope {
    id: view

    required property bool reduceMotion
    required property bool acknowledgeable

    readonly property real crownWidth: Math.min(0.62 * width, 760)
    readonly property real padding: 48
    readonly property color ink: Qt.rgba(1, 1, 1, 0.94)

    signal acknowledged

    focus: true
    Accessible.role: Accessible.Grouping

    // Whoever hosts the screen need not know that it wants the keyboard.
    onWindowChanged: window => {
        if (window)
            view.forceActiveFocus()
    }

    // Where the window is too small for everything, the keyboard reaches the rest as well.
    Keys.onUpPressed: page.scrollBy(-40)
    Keys.onDownPressed: page.scrollBy(40)

    Rectangle {
        objectName: "background"
        anchors.fill: parent
        color: OrvantaPalette.midnight
    }

    BreathingClock {
        id: breathing

        objectName: "breathing"
        reduceMotion: view.reduceMotion
    }

    Glow {
        objectName: "glow"
        anchors.centerIn: parent
        anchors.alignWhenCentered: false
        width: Math.min(1.2 * Math.max(view.width, view.height), 1100)
        height: width
        endRadius: 0.48 * Math.min(view.width, view.height)
        innerOpacity: breathing.innerGlowOpacity
        middleOpacity: breathing.middleGlowOpacity
        layerOpacity: breathing.glowLayerOpacity
        scale: breathing.glowScale
    }

    Flickable {
        id: page

        function scrollBy(distance: real) {
            contentY = Math.max(0, Math.min(contentHeight - height, contentY + distance))
        }

        anchors.fill: parent
        contentWidth: width
        contentHeight: Math.max(height, stack.height + 2 * view.padding)
        // Of what does not fit, the reply is what is needed first.
        contentY: view.acknowledgeable ? contentHeight - height : 0
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        pixelAligned: true

        Column {
            id: stack

            objectName: "stack"
            y: Math.round((page.contentHeight - height) / 2)
            width: page.width
            spacing: 18

            Item {
                anchors.horizontalCenter: parent.horizontalCenter
                width: view.crownWidth
                height: Math.round(width / 2)

                Crown {
                    objectName: "crown"
                    anchors.fill: parent
                    pictures: CrownPictures
                    Accessible.role: Accessible.Graphic
                    Accessible.name: qsTr("Orvanta crown")
                }
            }

            Text {
                objectName: "motto"
                anchors.horizontalCenter: parent.horizontalCenter
                width: Math.min(Math.ceil(implicitWidth), view.width)
                topPadding: 8
                text: qsTr("You own your time, your orvanta.")
                font: BlockingTypography.motto
                color: view.ink
                lineHeightMode: Text.FixedHeight
                lineHeight: 27
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }

            Column {
                anchors.horizontalCenter: parent.horizontalCenter
                width: parent.width
                spacing: 8

                Text {
                    readonly property bool fitsOneLine: implicitWidth <= 760 && implicitWidth + 2 * 24 <= view.width

                    objectName: "quotation"
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: fitsOneLine ? Math.ceil(implicitWidth) : view.crownWidth
                    text: qsTr("Persevere in the exact fulfillment of the duties of the moment.")
                    font: BlockingTypography.quotation
                    color: view.ink
                    lineHeightMode: Text.FixedHeight
                    lineHeight: 33
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.Wrap
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }

                Text {
                    objectName: "attribution"
                    anchors.horizontalCenter: parent.horizontalCenter
                    text: qsTr("The Way, 825")
                    font: BlockingTypography.attribution
                    color: Qt.rgba(1, 1, 1, 0.62)
                    lineHeightMode: Text.FixedHeight
                    lineHeight: 19
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
            }

            // Its place is kept whether it is there or not, so that nothing else moves.
            Item {
                width: parent.width
                height: 10 + 43

                Loader {
                    y: 10
                    anchors.horizontalCenter: parent.horizontalCenter
                    focus: true
                    active: view.acknowledgeable
                    sourceComponent: ReplyButton {
                        objectName: "acknowledgeApplicationBlock"
                        text: qsTr("I will focus now")
                        // The linter of Qt 6.4 does not know that a component sees the ids around it.
                        // qmllint disable unqualified
                        reduceMotion: view.reduceMotion
                        onClicked: view.acknowledged()
                        // qmllint enable unqualified
                        focus: true
                    }
                }
            }
        }
    }
}
