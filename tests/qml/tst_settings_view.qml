import QtQuick
import QtTest
import Orvanta.Palette
import Orvanta.Settings
import Orvanta.Test

Item {
    id: root

    width: 720
    height: 760

    Component {
        id: screen

        FocusSettingsView {
            focusActive: false
            focusStatusLabel: "Focus inactive"
            permissionSummary: "Orvanta connected"
            permissionHint: ""
            notices: []
            blockedDomains: Lists.domains([])
            blockedApplications: Lists.applications([])
            installedApplications: Lists.source(["Album", "Chatter", "Console", "Ledger", "Postbox", "Tunes"], false)
            reduceMotion: true
            websiteProtectionTitle: "Activate website protection"
            websiteBlockingActive: false
            dark: false
        }
    }

    SignalSpy { id: protection; signalName: "websiteProtectionRequested" }
    SignalSpy { id: domainAdded; signalName: "domainAdded" }
    SignalSpy { id: domainRemoved; signalName: "domainRemoved" }
    SignalSpy { id: applicationAdded; signalName: "applicationAdded" }
    SignalSpy { id: applicationRemoved; signalName: "applicationRemoved" }
    SignalSpy { id: opacity; signalName: "opacityChanged" }

    TestCase {
        id: test

        name: "Settings"
        when: windowShown

        readonly property var spies: [protection, domainAdded, domainRemoved, applicationAdded, applicationRemoved]

        function make(properties) {
            const view = createTemporaryObject(screen, root, Object.assign({ width: root.width, height: root.height }, properties))
            verify(view)
            view.forceActiveFocus()
            waitForRendering(view)
            for (const spy of spies) {
                spy.target = view
                spy.clear()
            }
            return view
        }

        function part(item, name) {
            const found = findChild(item, name)
            verify(found, name)
            return found
        }

        function frameOf(view, item) {
            const corner = item.mapToItem(view, 0, 0)
            return Qt.rect(corner.x, corner.y, item.width, item.height)
        }

        function rowsOf(view, section) {
            return part(part(view, section), "rows")
        }

        function rowAt(view, section, row) {
            const list = rowsOf(view, section)
            tryVerify(() => list.itemAtIndex(row) !== null)
            return list.itemAtIndex(row)
        }

        function removeAt(view, section, row) {
            return part(rowAt(view, section, row), "remove")
        }

        function addOf(view, section) {
            return part(part(view, section), "add")
        }

        function openDomainEditor(view) {
            mouseClick(addOf(view, "websites"))
            return part(view, "domain")
        }

        function openApplicationEditor(view) {
            mouseClick(addOf(view, "applications"))
            const list = part(view, "applications_list")
            tryVerify(() => list.visible)
            return list
        }

        function type(text) {
            for (const letter of text)
                keyClick(letter)
        }

        // What it says

        function test_the_texts() {
            const view = make({ websiteProtectionTitle: "Website protection ready" })
            compare(part(view, "title").text, "Orvanta Focus")
            compare(part(view, "title").font.pixelSize, 30)
            compare(part(view, "title").font.weight, Font.Bold)
            compare(part(view, "focusStatusLabel").text, "Focus inactive")
            compare(part(view, "permissionSummary").text, "Orvanta connected")
            compare(part(view, "permissionSummary").color.toString(), OrvantaPalette.stone.toString())
            compare(part(part(view, "websites"), "title").text, "Blocked websites")
            compare(part(part(view, "websites"), "emptyMessage").text, "No websites blocked")
            compare(part(part(view, "applications"), "title").text, "Blocked applications")
            compare(part(part(view, "applications"), "emptyMessage").text, "No applications blocked")
            compare(part(view, "websiteProtection").text, "Website protection ready")
        }

        function test_the_parts_stand_in_order() {
            const view = make({ websiteProtectionTitle: "Website protection ready" })
            compare(frameOf(view, part(view, "title")), Qt.rect(32, 32, 656, 38))
            compare(frameOf(view, part(view, "permissions")).y, 114)
            compare(frameOf(view, part(view, "websites")).y, 210)
            const names = Accessibility.everything(view).filter(name => name !== "")
            const order = ["Orvanta Focus", "Focus inactive", "Permissions", "Orvanta connected", "Website protection ready", "Blocked websites",
                "Add to blocked websites", "No websites blocked", "Blocked applications", "Add to blocked applications", "No applications blocked"]
            compare(names, order)
        }

        function test_sections_are_glass_with_16_inside_and_a_radius_of_20() {
            const view = make()
            for (const name of ["permissions", "websites", "applications"]) {
                const section = part(view, name)
                compare(part(section, "glass").radius, 20)
                const content = frameOf(section, part(section, "content"))
                compare(content.x, 16)
                compare(content.y, 16)
                compare(content.width, section.width - 32)
                compare(section.height, content.height + 32)
            }
        }

        function test_what_a_text_holds_is_never_markup() {
            const view = make({ blockedDomains: Lists.domains(["<b>bold</b>.example"]), permissionSummary: "<i>x</i>" })
            compare(part(rowAt(view, "websites", 0), "text").textFormat, Text.PlainText)
            compare(part(view, "permissionSummary").textFormat, Text.PlainText)
        }

        function test_notices_are_shown() {
            const view = make({ notices: ["settings.json could not be saved"] })
            verify(Accessibility.everything(view).includes("settings.json could not be saved"))
        }

        function test_the_focus_line_has_a_hollow_or_a_golden_dot() {
            const view = make()
            compare(part(view, "focusDot").color.a, 0)
            view.focusActive = true
            view.focusStatusLabel = "Focus active · Orvanta task"
            compare(part(view, "focusDot").color.toString(), OrvantaPalette.gold.toString())
            compare(part(view, "focusStatusLabel").text, "Focus active · Orvanta task")
        }

        // Website protection

        function test_a_hint_stands_beneath_the_status_where_there_is_one() {
            const view = make({ permissionSummary: "Install Orvanta Focus in Applications first" })
            const hint = part(view, "permissionHint")
            verify(!hint.visible)
            view.permissionHint = "This copy runs from a folder of its own."
            waitForRendering(view)
            verify(hint.visible)
            const summary = part(view, "permissionSummary")
            verify(frameOf(view, hint).y >= frameOf(view, summary).y + summary.height)
        }

        function test_the_button_asks_for_website_protection() {
            const view = make()
            mouseClick(part(view, "websiteProtection"))
            compare(protection.count, 1)
        }

        function test_the_button_is_gold_except_while_blocking_is_active() {
            const view = make({ websiteProtectionTitle: "Website protection ready" })
            const capsule = part(part(view, "websiteProtection"), "capsule")
            compare(capsule.color.toString(), OrvantaPalette.gold.toString())
            view.websiteProtectionTitle = "Blocking Active"
            view.websiteBlockingActive = true
            compare(capsule.color.toString(), "#27684a")
            mouseClick(part(view, "websiteProtection"))
            compare(protection.count, 1)
        }

        function test_a_long_status_wraps_and_does_not_push_the_button_out() {
            const view = make({ width: 560, permissionSummary: "Approve website protection in System Settings, and then wait for a while".repeat(2) })
            const button = part(view, "websiteProtection")
            const section = part(view, "permissions")
            compare(frameOf(section, button).x + button.width, section.width - 16)
            const summary = part(view, "permissionSummary")
            verify(summary.lineCount > 2)
            verify(frameOf(section, summary).x + summary.width <= frameOf(section, button).x - 16)
        }

        // The list sections

        function test_rows_stand_in_the_order_given() {
            const view = make({ blockedDomains: Lists.domains(["b.example", "a.example", "c.example"]) })
            compare(part(rowAt(view, "websites", 0), "text").text, "b.example")
            compare(part(rowAt(view, "websites", 1), "text").text, "a.example")
            compare(part(rowAt(view, "websites", 2), "text").text, "c.example")
            compare(removeAt(view, "websites", 0).text, "Remove")
            verify(!part(part(view, "websites"), "emptyMessage").visible)
            const first = frameOf(view, rowAt(view, "websites", 0))
            compare(first.height, 20)
            compare(frameOf(view, rowAt(view, "websites", 1)).y - first.y, 32)
            compare(first.y - frameOf(view, addOf(view, "websites")).y, 32 + 12)
        }

        function test_an_empty_list_says_so_and_keeps_its_plus() {
            const domains = Lists.domains(["a.example"])
            const view = make({ blockedDomains: domains })
            verify(addOf(view, "websites").visible)
            Lists.setDomains(domains, [])
            verify(part(part(view, "websites"), "emptyMessage").visible)
            verify(!rowsOf(view, "websites").parent.visible)
            verify(addOf(view, "websites").visible)
        }

        function test_remove_reports_the_row() {
            const view = make({ blockedDomains: Lists.domains(["a.example", "b.example"]), blockedApplications: Lists.applications(["Album", "Chatter"]) })
            mouseClick(removeAt(view, "websites", 1))
            compare(domainRemoved.count, 1)
            compare(domainRemoved.signalArguments[0][0], "b.example")
            mouseClick(removeAt(view, "applications", 0))
            compare(applicationRemoved.count, 1)
            compare(applicationRemoved.signalArguments[0][0], "org.example.Album")
        }

        function test_application_rows_show_icon_name_and_identifier() {
            const view = make({ blockedApplications: Lists.applications(["Album"]) })
            const row = rowAt(view, "applications", 0)
            compare(row.height, 36)
            compare(part(row, "displayName").text, "Album")
            compare(part(row, "bundleIdentifier").text, "org.example.Album")
            compare(part(row, "bundleIdentifier").font.pixelSize, 12)
            compare(part(row, "bundleIdentifier").color.toString(), OrvantaPalette.stone.toString())
            const name = frameOf(row, part(row, "displayName"))
            compare(frameOf(row, part(row, "bundleIdentifier")).y - (name.y + name.height), 2)
            const picture = part(row, "picture")
            tryVerify(() => picture.visible, 30000)
            compare([picture.width, picture.height], [34, 34])
            compare(name.x, 34 + 12)
            verify(!part(row, "symbol").visible)
        }

        function test_an_uninstalled_application_keeps_its_row_with_the_generic_symbol() {
            const view = make({ blockedApplications: Lists.applications(["Vanished"]) })
            const row = rowAt(view, "applications", 0)
            const symbol = part(row, "symbol")
            verify(symbol.visible)
            compare(symbol.kind, Symbol.App)
            compare(symbol.color.toString(), OrvantaPalette.stone.toString())
            compare([symbol.width, symbol.height], [24, 24])
            compare(frameOf(row, symbol).x, 5)
            verify(!part(row, "picture").visible)
        }

        function test_the_add_button_is_named_after_the_title_in_lower_case() {
            const view = make()
            compare(Accessibility.name(addOf(view, "websites")), "Add to blocked websites")
            compare(Accessibility.name(addOf(view, "applications")), "Add to blocked applications")
            part(view, "websites").title = "Some Other TITLE"
            compare(Accessibility.name(addOf(view, "websites")), "Add to some other title")
        }

        function test_only_what_is_seen_of_a_hundred_thousand_rows_exists() {
            const view = make({ blockedDomains: Lists.manyDomains(100000) })
            const list = rowsOf(view, "websites")
            verify(list.contentItem.children.length < 60, list.contentItem.children.length)
            const page = part(view, "page")
            for (const place of [1000, 55555, 99980]) {
                page.contentY = place * 32
                list.forceLayout()
                const row = list.itemAtIndex(place)
                verify(row, place)
                const y = row.mapToItem(view, 0, 0).y
                verify(y > 0 && y < 760, y)
                compare(part(row, "text").text, "site-" + String(place).padStart(6, "0") + ".example")
                verify(list.contentItem.children.length < 120, list.contentItem.children.length)
            }
        }

        function test_a_change_far_up_a_long_list_keeps_every_row_in_its_place() {
            const domains = Lists.manyDomains(5000)
            const view = make({ blockedDomains: domains })
            const page = part(view, "page")
            page.contentY = 3000 * 32
            const list = rowsOf(view, "websites")
            const texts = Lists.domainsOf(domains)
            Lists.setDomains(domains, ["a.example"].concat(texts))
            list.forceLayout()
            for (const place of [3000, 3010]) {
                const row = rowAt(view, "websites", place)
                compare(part(row, "text").text, texts[place - 1])
                compare(row.mapToItem(list.parent, 0, 0).y, place * 32)
            }
            Lists.setDomains(domains, texts.slice(100))
            list.forceLayout()
            for (const place of [3000, 3010])
                compare(rowAt(view, "websites", place).mapToItem(list.parent, 0, 0).y, place * 32)
        }

        // The domain editor

        function test_the_domain_editor() {
            const view = make()
            const field = openDomainEditor(view)
            compare(view.editor, "domain")
            const panel = part(view, "panel")
            compare(panel.width, 360)
            compare(frameOf(panel, part(panel, "content")).x, 24)
            compare(part(panel, "content").spacing, 16)
            compare(part(panel, "title").text, "Block website")
            compare(part(panel, "title").font.weight, Font.DemiBold)
            compare(field.placeholder, "Domain")
            compare(field.text, "")
            compare(part(panel, "cancel").text, "Cancel")
            compare(part(panel, "confirm").text, "Block website")
            verify(part(field, "input").activeFocus)
        }

        function test_a_domain_of_only_spaces_leaves_block_website_disabled() {
            const view = make()
            openDomainEditor(view)
            const confirm = part(view, "confirm")
            verify(!confirm.enabled)
            verify(Accessibility.press(confirm))
            type("   ")
            verify(!confirm.enabled)
            keyClick(Qt.Key_Return)
            mouseClick(confirm)
            compare(domainAdded.count, 0)
            compare(view.editor, "domain")
            type("x")
            verify(confirm.enabled)
        }

        function test_the_domain_is_saved_as_typed_and_the_sheet_goes() {
            const view = make()
            openDomainEditor(view)
            type(" HTTPS://News.Example/x ")
            mouseClick(part(view, "confirm"))
            compare(domainAdded.count, 1)
            compare(domainAdded.signalArguments[0][0], " HTTPS://News.Example/x ")
            compare(view.editor, "")
            tryVerify(() => !findChild(view, "panel"))
        }

        function test_return_confirms_and_escape_cancels() {
            const view = make()
            openDomainEditor(view)
            type("a.example")
            keyClick(Qt.Key_Escape)
            compare(view.editor, "")
            compare(domainAdded.count, 0)
            const field = openDomainEditor(view)
            compare(field.text, "") // a new sheet begins empty
            type("a.example")
            keyClick(Qt.Key_Return)
            compare(domainAdded.count, 1)
            compare(view.editor, "")
        }

        function test_cancel_saves_nothing() {
            const view = make()
            openDomainEditor(view)
            type("a.example")
            mouseClick(part(view, "cancel"))
            compare(view.editor, "")
            compare(domainAdded.count, 0)
            verify(addOf(view, "websites").activeFocus)
        }

        // The application editor

        function test_the_application_editor() {
            const view = make()
            const list = openApplicationEditor(view)
            compare(view.editor, "application")
            const panel = part(view, "panel")
            compare(panel.width, 360)
            compare(part(panel, "title").text, "Block application")
            compare(part(panel, "search").placeholder, "Search applications")
            compare(part(panel, "cancel").text, "Cancel")
            compare(part(panel, "confirm").text, "Block application")
            verify(part(part(panel, "search"), "input").activeFocus)
            tryCompare(list, "count", 6)
            const row = list.itemAtIndex(1)
            compare(part(row, "displayName").text, "Chatter")
            compare(part(row, "bundleIdentifier").text, "org.example.Chatter")
            const picture = part(row, "picture")
            tryVerify(() => picture.visible, 30000)
        }

        function test_while_applications_are_found_it_says_so_and_nothing_jumps_after() {
            const view = make({ installedApplications: Lists.source(["Album", "Chatter"], true) })
            mouseClick(addOf(view, "applications"))
            verify(part(view, "progress").visible)
            verify(Accessibility.everything(view).includes("Finding applications…"))
            const height = part(view, "panel").height
            const list = part(view, "applications_list")
            verify(!list.visible)
            Lists.release()
            tryVerify(() => list.visible)
            verify(!part(view, "progress").visible)
            compare(part(view, "panel").height, height)
            compare(list.count, 2)
        }

        function test_a_search_narrows_the_list_and_only_spaces_show_all() {
            const view = make()
            const list = openApplicationEditor(view)
            type("led")
            tryCompare(list, "count", 1)
            keyClick(Qt.Key_Backspace); keyClick(Qt.Key_Backspace); keyClick(Qt.Key_Backspace)
            type("  ")
            tryCompare(list, "count", 6)
        }

        function test_block_application_before_anything_is_chosen_does_nothing_and_leaves_the_sheet_open() {
            const view = make()
            openApplicationEditor(view)
            const confirm = part(view, "confirm")
            verify(confirm.enabled)
            verify(!confirm.awake)
            mouseClick(confirm)
            verify(Accessibility.press(confirm))
            keyClick(Qt.Key_Return)
            compare(view.editor, "application")
            compare(applicationAdded.count, 0)
        }

        function test_the_picked_application_is_saved() {
            const view = make()
            const list = openApplicationEditor(view)
            tryCompare(list, "count", 6)
            mouseClick(list.itemAtIndex(2))
            verify(part(list.itemAtIndex(2), "check").visible)
            const confirm = part(view, "confirm")
            verify(confirm.awake)
            mouseClick(confirm)
            compare(applicationAdded.count, 1)
            compare(applicationAdded.signalArguments[0][0], "org.example.Console")
            compare(applicationAdded.signalArguments[0][1], "Console")
            compare(view.editor, "")
        }

        function test_a_choice_stays_while_the_search_hides_it() {
            const view = make()
            const list = openApplicationEditor(view)
            tryCompare(list, "count", 6)
            mouseClick(list.itemAtIndex(2))
            part(view, "search").forceActiveFocus()
            type("tunes")
            tryCompare(list, "count", 1)
            verify(part(view, "confirm").awake)
            keyClick(Qt.Key_Return)
            compare(applicationAdded.signalArguments[0][1], "Console")
        }

        function test_the_keyboard_picks() {
            const view = make()
            const list = openApplicationEditor(view)
            tryCompare(list, "count", 6)
            keyClick(Qt.Key_Down)
            verify(list.activeFocus)
            verify(part(list.itemAtIndex(0), "check").visible)
            keyClick(Qt.Key_Down)
            verify(part(list.itemAtIndex(1), "check").visible)
            keyClick(Qt.Key_End)
            keyClick(Qt.Key_Up)
            keyClick(Qt.Key_Return)
            compare(applicationAdded.signalArguments[0][1], "Postbox")
        }

        // The keyboard

        function test_tab_goes_round_the_window_in_both_directions() {
            const view = make({ blockedDomains: Lists.domains(["a.example", "b.example"]), blockedApplications: Lists.applications(["Album"]) })
            const stops = [part(view, "websiteProtection"), addOf(view, "websites"), removeAt(view, "websites", 0), removeAt(view, "websites", 1),
                addOf(view, "applications"), removeAt(view, "applications", 0)]
            for (let round = 0; round < 2; ++round) {
                for (const stop of stops) {
                    keyClick(Qt.Key_Tab)
                    verify(stop.activeFocus, round + " " + stop.accessibleName)
                    verify(part(stop, "focusRing").visible)
                }
            }
            for (const stop of stops.slice(0, -1).reverse()) {
                keyClick(Qt.Key_Backtab)
                verify(stop.activeFocus, stop.accessibleName)
            }
            keyClick(Qt.Key_Backtab)
            verify(stops[stops.length - 1].activeFocus)
        }

        function test_tab_brings_what_it_reaches_into_the_window() {
            const view = make({ blockedDomains: Lists.manyDomains(200) })
            for (let i = 0; i < 61; ++i)
                keyClick(Qt.Key_Tab)
            const button = removeAt(view, "websites", 58)
            verify(button.activeFocus)
            const y = button.mapToItem(view, 0, 0).y
            verify(y >= 0 && y + button.height <= view.height, y)
            keyClick(Qt.Key_Backtab)
            verify(removeAt(view, "websites", 57).activeFocus)
        }

        function test_a_ring_is_shown_for_the_keyboard_only() {
            const view = make()
            const button = part(view, "websiteProtection")
            mouseClick(button)
            verify(button.activeFocus)
            verify(!part(button, "focusRing").visible)
            keyClick(Qt.Key_Up)
            verify(part(button, "focusRing").visible)
            compare(part(button, "focusRing").border.color.toString(), "#8a6414")
        }

        function test_space_and_return_press() {
            const view = make()
            keyClick(Qt.Key_Tab)
            keyClick(Qt.Key_Space)
            compare(protection.count, 1)
            keyClick(Qt.Key_Tab)
            keyClick(Qt.Key_Space)
            compare(view.editor, "domain")
            keyClick(Qt.Key_Escape)
            verify(addOf(view, "websites").activeFocus)
            keyClick(Qt.Key_Tab)
            keyClick(Qt.Key_Return)
            compare(view.editor, "application")
            keyClick(Qt.Key_Escape)
            verify(addOf(view, "applications").activeFocus)
        }

        function test_tab_stays_in_the_sheet() {
            const view = make()
            const field = openDomainEditor(view)
            keyClick(Qt.Key_Tab)
            verify(part(view, "cancel").activeFocus)
            keyClick(Qt.Key_Tab)
            verify(part(field, "input").activeFocus) // there is nothing to confirm yet
            type("a")
            keyClick(Qt.Key_Tab)
            keyClick(Qt.Key_Tab)
            verify(part(view, "confirm").activeFocus)
            keyClick(Qt.Key_Tab)
            verify(part(field, "input").activeFocus)
            keyClick(Qt.Key_Backtab)
            verify(part(view, "confirm").activeFocus)
        }

        function test_tab_goes_through_the_application_editor() {
            const view = make()
            const list = openApplicationEditor(view)
            keyClick(Qt.Key_Tab)
            verify(list.activeFocus)
            verify(part(view, "listRing").visible)
            keyClick(Qt.Key_Tab)
            verify(part(view, "cancel").activeFocus)
            keyClick(Qt.Key_Tab)
            verify(part(view, "confirm").activeFocus)
            keyClick(Qt.Key_Tab)
            verify(part(part(view, "search"), "input").activeFocus)
            keyClick(Qt.Key_Backtab)
            verify(part(view, "confirm").activeFocus)
        }

        function test_after_remove_the_keyboard_goes_to_the_next_row_else_to_the_plus() {
            const domains = Lists.domains(["a.example", "b.example", "c.example"])
            const view = make({ blockedDomains: domains })
            view.domainRemoved.connect(domain => Lists.setDomains(domains, Lists.domainsOf(domains).filter(text => text !== domain)))
            for (let i = 0; i < 4; ++i)
                keyClick(Qt.Key_Tab)
            keyClick(Qt.Key_Return)
            compare(domainRemoved.signalArguments[0][0], "b.example")
            verify(removeAt(view, "websites", 1).activeFocus)
            keyClick(Qt.Key_Space)
            compare(domainRemoved.signalArguments[1][0], "c.example")
            verify(addOf(view, "websites").activeFocus)
        }

        // Sheets and what is beneath

        function test_beneath_a_sheet_nothing_scrolls_takes_focus_or_is_read_out() {
            const view = make({ blockedDomains: Lists.manyDomains(100) })
            verify(Accessibility.controls(view).includes("Add to blocked websites"))
            openDomainEditor(view)
            compare(Accessibility.controls(view), ["Domain", "Cancel", "Block website"])
            verify(part(view, "sheetVeil").color.a > 0.4)
            mouseWheel(view, 300, 600, 0, -600)
            compare(part(view, "page").contentY, 0)
            mouseClick(part(view, "websiteProtection"))
            compare(protection.count, 0)
            verify(part(part(view, "domain"), "input").activeFocus)
            keyClick(Qt.Key_Escape)
            verify(Accessibility.controls(view).includes("Add to blocked websites"))
        }

        function test_a_list_that_changes_beneath_a_sheet_is_there_when_it_goes() {
            const domains = Lists.domains([])
            const view = make({ blockedDomains: domains })
            openDomainEditor(view)
            type("half")
            Lists.setDomains(domains, ["elsewhere.example"])
            compare(view.editor, "domain")
            keyClick(Qt.Key_Escape)
            compare(part(rowAt(view, "websites", 0), "text").text, "elsewhere.example")
        }

        function test_a_view_that_goes_with_its_sheet_saves_nothing() {
            const view = make()
            openDomainEditor(view)
            type("half.example")
            view.destroy()
            tryVerify(() => !findChild(root, "panel"))
            compare(domainAdded.count, 0)
        }

        // Accessibility

        function test_every_control_has_a_name() {
            const view = make({ blockedDomains: Lists.domains(["a.example"]), blockedApplications: Lists.applications(["Album"]) })
            const controls = Accessibility.controls(view)
            compare(controls.length, 5)
            verify(controls.every(name => name !== ""), controls)
            openApplicationEditor(view)
            verify(Accessibility.controls(view).every(name => name !== ""))
        }

        function test_a_screen_reader_presses() {
            const view = make({ blockedDomains: Lists.domains(["a.example"]) })
            verify(Accessibility.press(removeAt(view, "websites", 0)))
            compare(domainRemoved.count, 1)
            verify(Accessibility.press(addOf(view, "websites")))
            compare(view.editor, "domain")
        }

        // Other desktops

        function test_light_and_dark() {
            const view = make()
            compare(part(view, "title").color.toString(), OrvantaPalette.midnight.toString())
            view.dark = true
            compare(part(view, "title").color.toString(), OrvantaPalette.ivory.toString())
            compare(part(view, "permissionSummary").color.toString(), "#b4b0a4")
        }

        function test_from_right_to_left_everything_is_mirrored() {
            const view = make({ blockedDomains: Lists.domains(["a.example"]), blockedApplications: Lists.applications(["Album"]) })
            view.LayoutMirroring.enabled = true
            view.LayoutMirroring.childrenInherit = true
            waitForRendering(view)
            const section = part(view, "websites")
            compare(frameOf(section, addOf(view, "websites")).x, 16)
            compare(part(rowAt(view, "websites", 0), "text").effectiveHorizontalAlignment, Text.AlignRight)
            const row = rowAt(view, "applications", 0)
            compare(frameOf(row, part(row, "picture").parent).x, row.width - 34)
            compare(frameOf(part(view, "permissions"), part(view, "websiteProtection")).x, 16)
            openDomainEditor(view)
            const panel = part(view, "panel")
            verify(frameOf(panel, part(panel, "confirm")).x < frameOf(panel, part(panel, "cancel")).x)
        }

        function test_the_column_grows_to_760_and_is_centred() {
            const view = make({ width: 1400 })
            const section = frameOf(view, part(view, "websites"))
            compare(section.width, 760)
            compare(section.x, 320)
        }

        // Where the pointer is, is shown in 80 ms, and no longer in 120; a press at once, and its end in 120.
        function answersThePointer(item, fill) {
            const beside = -12
            mouseMove(item, beside, beside)
            tryCompare(fill, "answered", 0)
            const rest = fill.restColor.toString()
            tryVerify(() => fill.color.toString() === rest, 15000)
            mouseMove(item, item.width / 2, item.height / 2)
            tryCompare(fill, "answered", 1)
            compare(fill.duration, 80)
            tryVerify(() => fill.color.toString() === fill.hoverColor.toString(), 15000)
            mouseMove(item, beside, beside)
            tryCompare(fill, "answered", 0)
            compare(fill.duration, 120)
            tryVerify(() => fill.color.toString() === rest, 15000)
        }

        function answersAPress(button, fill) {
            mouseMove(button, button.width / 2, button.height / 2)
            tryCompare(fill, "answered", 1)
            mousePress(button)
            compare(fill.duration, 0)
            compare(fill.color.toString(), fill.pressColor.toString())
            mouseRelease(button)
            compare(fill.answered, 1)
            compare(fill.duration, 120)
            tryVerify(() => fill.color.toString() === fill.hoverColor.toString(), 15000)
        }

        function test_with_motion_everything_answers_the_pointer_softly_and_a_press_at_once() {
            const view = make({ reduceMotion: false, blockedDomains: Lists.domains(["a.example"]) })
            const protectionButton = part(view, "websiteProtection")
            const remove = removeAt(view, "websites", 0)
            for (const [button, fill] of [[protectionButton, "capsule"], [remove, "veil"]]) {
                answersThePointer(button, part(button, fill))
                answersAPress(button, part(button, fill))
            }
            answersThePointer(addOf(view, "websites"), part(addOf(view, "websites"), "circle"))
            answersThePointer(rowAt(view, "websites", 0), part(rowAt(view, "websites", 0), "hoverVeil"))
            const list = openApplicationEditor(view)
            tryCompare(list, "count", 6)
            tryCompare(part(view, "panel"), "lift", 0, 15000)
            answersThePointer(part(view, "cancel"), part(part(view, "cancel"), "capsule"))
            answersThePointer(list.itemAtIndex(0), part(list.itemAtIndex(0), "hoverVeil"))
        }

        function test_without_motion_everything_answers_the_pointer_at_once() {
            const view = make({ blockedDomains: Lists.domains(["a.example"]) })
            const remove = removeAt(view, "websites", 0)
            const row = part(rowAt(view, "websites", 0), "hoverVeil")
            const veil = part(remove, "veil")
            for (const fill of [row, veil])
                compare(fill.color.a, 0)
            mouseMove(remove, remove.width / 2, remove.height / 2)
            for (const fill of [row, veil])
                compare(fill.color.toString(), fill.hoverColor.toString())
            mouseMove(view, 2, 2)
            for (const fill of [row, veil])
                compare(fill.color.a, 0)
        }

        function test_with_motion_a_sheet_comes_softly_and_can_be_used_at_once() {
            const view = make({ reduceMotion: false })
            openDomainEditor(view)
            type("a.example")
            keyClick(Qt.Key_Return)
            compare(domainAdded.count, 1)
        }

        function test_with_motion_a_sheet_that_is_closed_fades_out_of_reach() {
            const view = make({ reduceMotion: false })
            openDomainEditor(view)
            type("a.example")
            const sheet = part(view, "sheet")
            opacity.target = sheet
            opacity.clear()
            keyClick(Qt.Key_Escape)
            compare(view.editor, "")
            verify(sheet.item)
            verify(!sheet.enabled)
            tryVerify(() => !sheet.item)
            verify(opacity.count >= 2, "down, and back for the next one")
            compare(domainAdded.count, 0)
        }

        function test_with_motion_a_sheet_that_is_opened_while_the_last_one_fades_is_a_new_one() {
            const view = make({ reduceMotion: false })
            openDomainEditor(view)
            type("a.example")
            const sheet = part(view, "sheet")
            keyClick(Qt.Key_Escape)
            verify(sheet.item)
            openDomainEditor(view)
            compare(sheet.opacity, 1)
            type("b.example")
            keyClick(Qt.Key_Return)
            compare(domainAdded.count, 1)
            compare(domainAdded.signalArguments[0][0], "b.example")
            tryVerify(() => !sheet.item)
        }

        function test_without_motion_a_sheet_that_is_closed_goes_at_once() {
            const view = make({})
            openDomainEditor(view)
            keyClick(Qt.Key_Escape)
            verify(!part(view, "sheet").item)
        }
    }
}
