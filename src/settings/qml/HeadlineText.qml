import QtQuick

/* The heading of a section. */
StyledText {
    size: 15
    font.weight: Font.DemiBold
    Accessible.role: Accessible.Heading
}
