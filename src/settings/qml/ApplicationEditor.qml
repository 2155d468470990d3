pragma ComponentBehavior: Bound
import QtQuick
import Orvanta.Settings

/*
 * The sheet in which an application is picked. The list is loaded when the sheet opens; the search narrows it, and what was
 * picked stays so while it is hidden.
 */
Sheet {
    id: editor

    required property InstalledApplicationSource source

    readonly property int rowHeight: Math.max(50, style.scaled(20) + style.scaled(15) + 13)

    signal save(bundleIdentifier: string, displayName: string)

    function confirm() {
        if (applications.confirm())
            editor.dismissed()
    }

    title: qsTr("Block application")
    Keys.onReturnPressed: editor.confirm()
    Keys.onEnterPressed: editor.confirm()

    ApplicationEditorModel {
        id: applications

        source: editor.source
        searchText: search.text
        onSaved: (bundleIdentifier, displayName) => editor.save(bundleIdentifier, displayName)
    }

    TextEntry {
        id: search

        objectName: "search"
        width: parent?.width ?? 0
        focus: true
        style: editor.style
        placeholder: qsTr("Search applications")
        searches: true
        Keys.onDownPressed: list.enter(Qt.TabFocusReason)
        Keys.onTabPressed: {
            if (applications.isLoading)
                buttons.focusFirst()
            else
                list.forceActiveFocus(Qt.TabFocusReason)
        }
        Keys.onBacktabPressed: buttons.focusLast()
    }

    // As high while the applications are being found as with the list, so that nothing jumps.
    Rectangle {
        id: well

        objectName: "well"
        width: parent?.width ?? 0
        // Five rows and a half: the half says that there is more.
        height: Math.max(editor.rowHeight, Math.min(6 + Math.round(5.5 * editor.rowHeight), editor.contentSpace - search.height - buttons.height - 3 * 16))
        radius: 12
        color: editor.style.well
        border.width: 1
        border.color: editor.style.glassEdge

        Column {
            objectName: "progress"
            anchors.centerIn: parent
            visible: applications.isLoading
            spacing: 16

            Spinner {
                anchors.horizontalCenter: parent.horizontalCenter
                style: editor.style
            }

            StyledText {
                objectName: "finding"
                anchors.horizontalCenter: parent.horizontalCenter
                width: Math.min(implicitWidth, well.width - 2 * 12)
                style: editor.style
                text: qsTr("Finding applications…")
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignHCenter
                color: editor.style.secondaryText
            }
        }

        ListView {
            id: list

            function enter(reason: int) {
                if (applications.isLoading)
                    return
                if (applications.selectedRow < 0)
                    applications.moveSelection(1)
                list.forceActiveFocus(reason)
            }

            objectName: "applications_list"
            anchors { fill: parent; leftMargin: 5; rightMargin: 12; topMargin: 1; bottomMargin: 1 }
            visible: !applications.isLoading
            model: applications
            topMargin: 5
            bottomMargin: 5
            clip: true
            reuseItems: true
            boundsBehavior: Flickable.StopAtBounds
            keyNavigationEnabled: false
            highlightFollowsCurrentItem: false
            currentIndex: -1
            cacheBuffer: editor.rowHeight
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Applications")
            Accessible.focusable: true

            Keys.onUpPressed: applications.moveSelection(-1)
            Keys.onDownPressed: applications.moveSelection(1)
            Keys.onTabPressed: buttons.focusFirst()
            Keys.onBacktabPressed: search.forceActiveFocus(Qt.BacktabFocusReason)
            Keys.onPressed: event => {
                event.accepted = true
                switch (event.key) {
                case Qt.Key_Home:
                    applications.select(0)
                    break
                case Qt.Key_End:
                    applications.select(applications.count - 1)
                    break
                case Qt.Key_PageUp:
                    applications.moveSelection(-5)
                    break
                case Qt.Key_PageDown:
                    applications.moveSelection(5)
                    break
                default:
                    event.accepted = false
                }
            }

            delegate: ApplicationChoice {
                required property int index

                width: ListView.view?.width ?? 0
                height: editor.rowHeight
                style: editor.style
                isSelected: index === applications.selectedRow
                showsRing: list.activeFocus && editor.style.ringsShown
                onPicked: {
                    list.forceActiveFocus(Qt.MouseFocusReason)
                    applications.select(index)
                }
            }

            Connections {
                target: applications

                function onSelectionChanged() {
                    if (applications.selectedRow >= 0)
                        list.positionViewAtIndex(applications.selectedRow, ListView.Contain)
                }
            }
        }

        // A list that nothing is chosen in shows by itself that the keyboard is there.
        Rectangle {
            objectName: "listRing"
            anchors { fill: parent; margins: -4 }
            visible: list.activeFocus && editor.style.ringsShown && applications.selectedRow < 0
            radius: 16
            color: "transparent"
            border.width: 2
            border.color: editor.style.ring
        }

        ScrollHandle {
            anchors { right: parent.right; top: parent.top; bottom: parent.bottom; topMargin: 6; bottomMargin: 6 }
            visible: !applications.isLoading && list.visibleArea.heightRatio < 1
            style: editor.style
            flickable: list
        }
    }

    SheetButtons {
        id: buttons

        width: parent?.width ?? 0
        style: editor.style
        confirmText: qsTr("Block application")
        confirmAwake: applications.canConfirm
        onCancelled: editor.dismissed()
        onConfirmed: editor.confirm()
        onLeftForward: search.forceActiveFocus(Qt.TabFocusReason)
        onLeftBackward: {
            if (applications.isLoading)
                search.forceActiveFocus(Qt.BacktabFocusReason)
            else
                list.forceActiveFocus(Qt.BacktabFocusReason)
        }
    }
}
