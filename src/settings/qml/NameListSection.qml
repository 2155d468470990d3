pragma ComponentBehavior: Bound
import QtQuick

/* A list of names under a heading, or a sentence where the first name would stand. */
GlassSection {
    id: section

    required property string title
    required property string emptyMessage
    required property var items // texts

    Text {
        text: section.title
        color: section.colors.text
        font { pixelSize: 15; weight: Font.DemiBold }
        lineHeight: 20
        lineHeightMode: Text.FixedHeight
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    Text {
        visible: section.items.length === 0
        text: section.emptyMessage
        color: section.colors.secondaryText
        font.pixelSize: 14
        lineHeight: 20
        lineHeightMode: Text.FixedHeight
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    ListView {
        visible: section.items.length > 0
        width: parent?.width ?? 0
        height: Math.min(contentHeight, 8 * 32)
        clip: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        spacing: 12
        model: section.items

        delegate: Text {
            required property string modelData

            width: ListView.view.width
            text: modelData
            textFormat: Text.PlainText
            elide: Text.ElideMiddle
            color: section.colors.text
            font.pixelSize: 14
            lineHeight: 20
            lineHeightMode: Text.FixedHeight
            Accessible.role: Accessible.ListItem
            Accessible.name: text
        }
    }
}
