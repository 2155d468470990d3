import QtQuick
import Orvanta.Settings

/* Turns while something is being done; with reduced motion it stands, and the words beside it say what goes on. */
Symbol {
    id: spinner

    required property SettingsStyle style

    width: 24
    height: 24
    kind: Symbol.Arc
    color: style.dark ? style.gold : style.ring
    Accessible.ignored: true

    RotationAnimation on rotation {
        running: spinner.visible && !spinner.style.reduceMotion
        loops: Animation.Infinite
        from: 0
        to: 360
        duration: 1000
    }
}
