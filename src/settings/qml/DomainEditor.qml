import QtQuick
import Orvanta.Settings

/* The sheet in which a website is named. It hands on what was typed, as it was typed. */
Sheet {
    id: editor

    signal save(domain: string)

    function confirm() {
        if (!entry.canSave)
            return
        editor.save(entry.domain)
        editor.dismissed()
    }

    title: qsTr("Block website")
    Keys.onReturnPressed: editor.confirm()
    Keys.onEnterPressed: editor.confirm()

    DomainEntry {
        id: entry
        domain: field.text
    }

    TextEntry {
        id: field

        objectName: "domain"
        width: parent?.width ?? 0
        focus: true
        style: editor.style
        placeholder: qsTr("Domain")
        Keys.onTabPressed: buttons.focusFirst()
        Keys.onBacktabPressed: buttons.focusLast()
    }

    SheetButtons {
        id: buttons

        width: parent?.width ?? 0
        style: editor.style
        confirmText: qsTr("Block website")
        confirmAvailable: entry.canSave
        onCancelled: editor.dismissed()
        onConfirmed: editor.confirm()
        onLeftForward: field.forceActiveFocus(Qt.TabFocusReason)
        onLeftBackward: field.forceActiveFocus(Qt.BacktabFocusReason)
    }
}
