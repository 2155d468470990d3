import QtQuick
import Orvanta.Settings

/*
 * The icon of the application at `url`, in a square of `size`; an outlined square if there is no application, or if it has
 * no icon. What is beside it in words describes it, so a screen reader passes over it.
 */
Item {
    id: icon

    required property SettingsStyle style
    required property url url
    required property real size

    readonly property int pixels: Math.round(size * Screen.devicePixelRatio)
    readonly property bool found: picture.status === Image.Ready && picture.implicitWidth > 1

    width: size
    height: size
    Accessible.ignored: true

    Image {
        id: picture

        objectName: "picture"
        anchors.fill: parent
        visible: icon.found
        source: ApplicationIconSource.of(icon.url)
        sourceSize { width: icon.pixels; height: icon.pixels }
        asynchronous: true
        fillMode: Image.PreserveAspectFit
        mipmap: true
        Accessible.ignored: true
    }

    Symbol {
        objectName: "symbol"
        anchors { fill: parent; margins: 5 }
        // Not while an icon is on its way, since it would only flicker.
        visible: !icon.found && picture.status !== Image.Loading
        kind: Symbol.App
        color: icon.style.secondaryText
    }
}
