import QtQuick
import QtTest
import Orvanta.Settings
import Orvanta.Test

/*
 * Whatever the language and the size of the desktop's font: no words are cut off, none stand over others, and sheets stay
 * in the window.
 */
Item {
    id: root

    width: 900
    height: 900

    Component {
        id: screen

        FocusSettingsView {
            focusActive: false
            focusStatusLabel: qsTranslate("FocusStatus", "Focus active · macOS Focus + Orvanta task")
            permissionSummary: qsTranslate("orvanta::AppModel", "Orvanta connected")
            permissionHint: qsTranslate("StatusHints", "This copy runs from a folder of its own. Install the program for the whole computer, with its filter, and start the installed one.")
            notices: []
            blockedDomains: Lists.domains([])
            blockedApplications: Lists.applications([])
            installedApplications: Lists.source(["Album", "Chatter", "Console", "Ledger", "Postbox", "Tunes"], false)
            reduceMotion: true
            websiteProtectionTitle: qsTranslate("WebsiteProtection", "Activate website protection")
            websiteBlockingActive: false
            dark: false
        }
    }

    TestCase {
        id: test

        name: "Fits"
        when: windowShown

        // What people and other programs named: it may be as long as it likes, and ends in an ellipsis.
        readonly property var names: ["text", "displayName", "bundleIdentifier"]

        function cleanup() {
            Lists.release()
            Desktop.restore()
        }

        function everywhere_data() {
            const rows = []
            for (const language of ["en", "de", "es", "fr", "zh-CN", "ar"]) {
                for (const [size, factor] of [[13, 1], [22, 22 / 15], [30, 2]])
                    rows.push({ tag: language + ", font of " + size, language: language, size: size, factor: factor })
            }
            return rows
        }

        function make(data, properties) {
            Desktop.speak(data.language)
            Desktop.setFontPixelSize(data.size)
            fuzzyCompare(TextScale.factor, data.factor, 0.05)
            // The smallest window that the program has.
            const view = createTemporaryObject(screen, root, Object.assign({ width: 560, height: 620 }, properties))
            view.LayoutMirroring.enabled = data.language === "ar"
            view.LayoutMirroring.childrenInherit = true
            view.forceActiveFocus()
            waitForRendering(view)
            return view
        }

        function part(item, name) {
            const found = findChild(item, name)
            verify(found, name)
            return found
        }

        function isText(item) {
            return item.truncated !== undefined && item.lineCount !== undefined
        }

        function isButton(item) {
            return item.ringMargin !== undefined
        }

        // All that is seen beneath the item and for which `wanted` holds.
        function collect(item, wanted, found) {
            for (let i = 0; i < item.children.length; ++i) {
                const child = item.children[i]
                if (!child.visible || child.width === 0 || child.height === 0)
                    continue
                if (wanted(child))
                    found.push(child)
                collect(child, wanted, found)
            }
            return found
        }

        function frameOf(view, item) {
            const corner = view.mapFromItem(item, 0, 0)
            return { left: corner.x, top: corner.y, right: corner.x + item.width, bottom: corner.y + item.height, item: item }
        }

        // The part of a frame that is seen: lists cut off what is beyond their edges.
        function seenFrameOf(view, item) {
            const frame = frameOf(view, item)
            for (let parent = item.parent; parent && parent !== view; parent = parent.parent) {
                if (!parent.clip)
                    continue
                const edge = frameOf(view, parent)
                frame.top = Math.min(Math.max(frame.top, edge.top), edge.bottom)
                frame.bottom = Math.max(Math.min(frame.bottom, edge.bottom), edge.top)
            }
            return frame
        }

        function words(item) {
            return item.text + " (" + item.objectName + ")"
        }

        function overlap(a, b) {
            return Math.min(a.right, b.right) - Math.max(a.left, b.left) > 0.5 && Math.min(a.bottom, b.bottom) - Math.max(a.top, b.top) > 0.5
        }

        function isWithin(inner, outer) {
            return inner.left >= outer.left - 0.5 && inner.top >= outer.top - 0.5 && inner.right <= outer.right + 0.5 && inner.bottom <= outer.bottom + 0.5
        }

        // `place` is what has to hold everything sideways: the window or a sheet.
        function checkTexts(view, place, least) {
            const texts = collect(place, isText, [])
            verify(texts.length >= least, texts.length)
            const bounds = frameOf(view, place)
            for (const text of texts) {
                if (!names.includes(text.objectName)) {
                    verify(!text.truncated, words(text) + " is cut off")
                    verify(text.contentWidth <= text.width + 0.5, words(text) + " is wider than its place")
                }
                verify(text.fontInfo.pixelSize >= 11, words(text) + " can be read")
                const frame = frameOf(view, text)
                verify(frame.left >= bounds.left - 0.5 && frame.right <= bounds.right + 0.5, words(text) + " stands outside")
            }
            const frames = texts.map(text => seenFrameOf(view, text))
            const buttons = collect(place, isButton, [])
            for (let i = 0; i < frames.length; ++i) {
                for (let j = i + 1; j < frames.length; ++j)
                    verify(!overlap(frames[i], frames[j]), words(texts[i]) + " and " + words(texts[j]) + " stand over each other")
                for (const button of buttons) {
                    const other = frameOf(view, button)
                    if (isPartOf(texts[i], button))
                        verify(isWithin(frames[i], other), words(texts[i]) + " stands out of its button")
                    else
                        verify(!overlap(frames[i], other) || isBesideTheWord(frames[i], other, button), words(texts[i]) + " stands under the button " + button.accessibleName)
                }
            }
        }

        // What can be pressed of a plain button reaches out beyond its word, and may touch what is next to it.
        function isBesideTheWord(frame, buttonFrame, button) {
            const reach = button.reach ?? 0
            return !overlap(frame, { left: buttonFrame.left + reach, right: buttonFrame.right - reach, top: buttonFrame.top, bottom: buttonFrame.bottom })
        }

        function isPartOf(item, ancestor) {
            for (let parent = item.parent; parent; parent = parent.parent) {
                if (parent === ancestor)
                    return true
            }
            return false
        }

        function checkSheet(view, least) {
            const panel = part(view, "panel")
            compare(panel.width, 360)
            verify(isWithin(frameOf(view, panel), { left: 0, top: 0, right: view.width, bottom: view.height }), "the sheet is in the window")
            checkTexts(view, panel, least)
            const input = part(panel, "input")
            verify(input.contentHeight <= input.height, "what is typed is seen whole")
            compare(input.effectiveHorizontalAlignment, view.LayoutMirroring.enabled ? TextInput.AlignRight : TextInput.AlignLeft)
        }

        function test_the_window_data() { return everywhere_data() }
        function test_the_window(data) {
            for (const title of ["Activate website protection", ""]) {
                const view = make(data, {
                    blockedDomains: Lists.domains(["a.example", "a-very-long-name-of-a-website-that-has-no-end-in-sight.subdomain.of-another.example"]),
                    blockedApplications: Lists.applications(["Album", "An application with a name that is longer than any place that it could stand in"]),
                    notices: ["/home/someone/.config/orvanta-focus/settings.json could not be read and was put aside"],
                    websiteProtectionTitle: title
                })
                checkTexts(view, part(view, "page"), 12)
                compare(part(view, "page").contentWidth, view.width)
                view.destroy()
            }
        }

        function test_the_empty_lists_data() { return everywhere_data() }
        function test_the_empty_lists(data) {
            const view = make(data, {})
            checkTexts(view, part(view, "page"), 8)
        }

        function test_the_domain_editor_data() { return everywhere_data() }
        function test_the_domain_editor(data) {
            const view = make(data, {})
            view.openEditor("domain")
            checkSheet(view, 4)
            part(view, "domain").text = "news.example"
            checkSheet(view, 3)
        }

        function test_the_application_editor_data() { return everywhere_data() }
        function test_the_application_editor(data) {
            const view = make(data, {})
            view.openEditor("application")
            const list = part(view, "applications_list")
            tryVerify(() => list.visible && list.count === 6)
            checkSheet(view, 6)
        }

        function test_while_applications_are_found_data() { return everywhere_data() }
        function test_while_applications_are_found(data) {
            const view = make(data, { installedApplications: Lists.source(["Album"], true) })
            view.openEditor("application")
            verify(part(view, "progress").visible)
            checkSheet(view, 5)
        }
    }
}
