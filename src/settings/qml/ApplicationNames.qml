import QtQuick

/* The name of an application, and under it its identifier. */
Column {
    id: names

    required property SettingsStyle style
    required property string displayName
    required property string bundleIdentifier

    spacing: 2

    StyledText {
        objectName: "displayName"
        width: names.width
        style: names.style
        text: names.displayName
        elide: Text.ElideRight
        Accessible.ignored: true
    }

    StyledText {
        objectName: "bundleIdentifier"
        width: names.width
        style: names.style
        text: names.bundleIdentifier
        size: 12
        line: 15
        elide: Text.ElideRight
        color: names.style.secondaryText
        Accessible.ignored: names.style.beneath
    }
}
