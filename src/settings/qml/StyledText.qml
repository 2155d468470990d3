import QtQuick

/*
 * A text of the settings. Its lines have a fixed height, so that a script with a taller font does not push anything. What
 * it shows is never taken for markup, wherever it comes from.
 */
Text {
    id: styled

    required property SettingsStyle style
    property real size: 14
    property real line: 20
    property real spacing: 0 // between letters; joined letters come apart when they are spaced

    textFormat: Text.PlainText
    color: style.text
    font.pixelSize: style.scaled(size)
    font.letterSpacing: style.mirrored ? 0 : spacing
    lineHeight: style.scaled(line)
    lineHeightMode: Text.FixedHeight
    height: Math.max(1, lineCount) * lineHeight
    verticalAlignment: Text.AlignVCenter
    // Said outright, so that a domain in a mirrored window stands on the right although it runs from the left.
    horizontalAlignment: Text.AlignLeft
    Accessible.role: Accessible.StaticText
    Accessible.name: styled.text
    Accessible.ignored: style.beneath
}
