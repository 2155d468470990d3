import QtQuick
import QtTest
import Orvanta.Blocking
import Orvanta.Palette
import Orvanta.Test

Item {
    id: root

    width: 1920
    height: 1080

    Component {
        id: screen

        BlockingView {
            reduceMotion: true
            acknowledgeable: true
        }
    }

    SignalSpy {
        id: acknowledged
        signalName: "acknowledged"
    }

    TestCase {
        id: test

        name: "BlockingView"
        when: windowShown

        readonly property var parts: ["crown", "motto", "quotation", "attribution"]

        function make(properties) {
            const view = createTemporaryObject(screen, root, Object.assign({ width: root.width, height: root.height }, properties))
            verify(view)
            verify(waitForItemPolished(part(view, "stack")))
            acknowledged.target = view
            acknowledged.clear()
            return view
        }

        function part(view, name) {
            const found = findChild(view, name)
            verify(found, name)
            return found
        }

        function reply(view) {
            return findChild(view, "acknowledgeApplicationBlock")
        }

        function frameOf(view, name) {
            const item = part(view, name)
            const corner = item.mapToItem(view, 0, 0)
            return Qt.rect(corner.x, corner.y, item.width, item.height)
        }

        /// As it is written, since colours that look alike may differ in bits that no display shows.
        function white(opacity) {
            return Qt.rgba(1, 1, 1, opacity).toString()
        }

        function test_says_what_it_says() {
            const view = make()
            compare(part(view, "motto").text, "You own your time, your orvanta.")
            compare(part(view, "quotation").text, "Persevere in the exact fulfillment of the duties of the moment.")
            compare(part(view, "attribution").text, "The Way, 825")
            compare(reply(view).text, "I will focus now")
        }

        function test_type() {
            const view = make()
            const motto = part(view, "motto").font
            compare(motto.pixelSize, 21)
            compare(motto.weight, Font.Medium)
            fuzzyCompare(motto.letterSpacing, 0.8, 1 / 64)
            const quotation = part(view, "quotation").font
            compare(quotation.pixelSize, 23)
            compare(quotation.weight, Font.Medium)
            const attribution = part(view, "attribution").font
            compare(attribution.pixelSize, 14)
            compare(attribution.weight, Font.DemiBold)
            compare(attribution.family, quotation.family)
            compare(BlockingTypography.reply.pixelSize, 15)
            compare(BlockingTypography.reply.weight, Font.DemiBold)
        }

        function test_ink() {
            const view = make()
            compare(part(view, "background").color, OrvantaPalette.midnight)
            compare(part(view, "motto").color.toString(), white(0.94))
            compare(part(view, "quotation").color.toString(), white(0.94))
            compare(part(view, "attribution").color.toString(), white(0.62))
        }

        function test_crown_width_data() {
            return [
                { tag: "small window", width: 560, height: 620, expected: 347.2 },
                { tag: "window", width: 720, height: 760, expected: 446.4 },
                { tag: "display", width: 1920, height: 1080, expected: 760 },
                { tag: "very large display", width: 3840, height: 2160, expected: 760 }
            ]
        }

        function test_crown_width(data) {
            const view = make({ width: data.width, height: data.height })
            const crown = frameOf(view, "crown")
            fuzzyCompare(crown.width, data.expected, 1e-9)
            compare(crown.height, Math.round(data.expected / 2))
            fuzzyCompare(crown.x + crown.width / 2, data.width / 2, 0.51)
        }

        function test_light_data() {
            return [
                { tag: "window", width: 720, height: 760, frame: 912, end: 345.6 },
                { tag: "display", width: 1920, height: 1080, frame: 1100, end: 518.4 },
                { tag: "tall", width: 700, height: 900, frame: 1080, end: 336 },
                { tag: "very large display", width: 3840, height: 2160, frame: 1100, end: 1036.8 }
            ]
        }

        function test_light(data) {
            const view = make({ width: data.width, height: data.height })
            const glow = part(view, "glow")
            fuzzyCompare(glow.width, data.frame, 1e-9)
            fuzzyCompare(glow.height, data.frame, 1e-9)
            fuzzyCompare(glow.endRadius, data.end, 1e-9)
            fuzzyCompare(glow.x + glow.width / 2, data.width / 2, 1e-9)
            fuzzyCompare(glow.y + glow.height / 2, data.height / 2, 1e-9)
            fuzzyCompare(glow.innerOpacity, 0.5508, 1e-9)
            fuzzyCompare(glow.middleOpacity, 0.182, 1e-9)
            fuzzyCompare(glow.scale, 0.9812, 1e-9)
            fuzzyCompare(glow.layerOpacity, 0.6996, 1e-9)
        }

        function test_spacing() {
            const view = make()
            const crown = frameOf(view, "crown")
            const motto = frameOf(view, "motto")
            const quotation = frameOf(view, "quotation")
            const attribution = frameOf(view, "attribution")
            compare(motto.y - (crown.y + crown.height), 18)
            compare(part(view, "motto").topPadding, 8)
            compare(quotation.y - (motto.y + motto.height), 18)
            compare(attribution.y - (quotation.y + quotation.height), 8)
            const corner = reply(view).mapToItem(view, 0, 0)
            compare(corner.y - (attribution.y + attribution.height), 18 + 10)
            const stack = frameOf(view, "stack")
            compare(stack.y, Math.round((view.height - stack.height) / 2))
            compare(corner.y + reply(view).height, stack.y + stack.height)
        }

        function test_line_boxes_do_not_depend_on_the_script() {
            const view = make()
            const motto = part(view, "motto")
            const quotation = part(view, "quotation")
            const heights = [motto.height, quotation.height]
            motto.text = "Ầ ﷺ 漢 ฏ๎ไ"
            quotation.text = motto.text
            compare([motto.height, quotation.height], heights)
        }

        function test_the_reply_is_a_capsule_around_its_words() {
            const view = make()
            const label = test.findLabel(reply(view))
            compare(reply(view).width, label.implicitWidth + 2 * 26)
            compare(reply(view).height, label.height + 2 * 12)
            compare(label.color.toString(), white(0.94))
            const capsule = findChild(view, "capsule")
            compare(capsule.radius, reply(view).height / 2)
            compare(capsule.color.toString(), white(0.12))
            const outline = findChild(view, "outline")
            compare(outline.radius, reply(view).height / 2)
            compare(outline.border.color.toString(), white(0.26))
            compare(outline.border.width, 1)
        }

        function findLabel(item) {
            return findChild(item, "label")
        }

        function test_without_a_reply_nothing_else_changes_data() {
            return [
                { tag: "display", width: 1920, height: 1080 },
                { tag: "window", width: 720, height: 760 }
            ]
        }

        function test_without_a_reply_nothing_else_changes(data) {
            const view = make({ width: data.width, height: data.height })
            const without = make({ width: data.width, height: data.height, acknowledgeable: false })
            verify(reply(view))
            verify(!reply(without))
            for (const name of parts.concat("glow"))
                compare(frameOf(without, name), frameOf(view, name), name)
        }

        function test_the_quotation_wraps_to_the_crown_when_it_does_not_fit_data() {
            const natural = part(make(), "quotation").implicitWidth
            return [
                { tag: "24 remain on each side", width: Math.ceil(natural) + 48, lines: 1 },
                { tag: "less remains", width: Math.floor(natural) + 47, lines: 2 },
                { tag: "window", width: 720, lines: 2 }
            ]
        }

        function test_the_quotation_wraps_to_the_crown_when_it_does_not_fit(data) {
            const view = make({ width: data.width, height: 900 })
            const quotation = part(view, "quotation")
            compare(quotation.lineCount, data.lines)
            verify(quotation.width <= 760)
            if (data.lines > 1)
                compare(quotation.width, part(view, "crown").width)
            fuzzyCompare(frameOf(view, "quotation").x + quotation.width / 2, data.width / 2, 0.51)
        }

        function test_fits_the_smallest_window() {
            const view = make({ width: 560, height: 620 })
            verify(frameOf(view, "crown").y >= 48)
            verify(reply(view).mapToItem(view, 0, reply(view).height).y <= 620 - 48)
            for (const name of parts) {
                const frame = frameOf(view, name)
                verify(frame.x >= 0 && frame.x + frame.width <= 560, name)
            }
        }

        function test_the_reply_can_be_reached_where_not_everything_fits() {
            const view = make({ width: 1920, height: 400 })
            let top = reply(view).mapToItem(view, 0, 0).y
            verify(top >= 0 && top + reply(view).height <= 400, top)
            mouseClick(view, reply(view).mapToItem(view, 5, 20).x + 20, top + 20)
            compare(acknowledged.count, 1)

            verify(frameOf(view, "crown").y < 0)
            for (let i = 0; i < 20; ++i)
                keyClick(Qt.Key_Up)
            compare(frameOf(view, "crown").y, 48)
            for (let i = 0; i < 20; ++i)
                keyClick(Qt.Key_Down)
            compare(reply(view).mapToItem(view, 0, 0).y, top)
        }

        function test_reads_from_right_to_left_unchanged() {
            const view = make()
            const mirrored = make()
            mirrored.LayoutMirroring.enabled = true
            mirrored.LayoutMirroring.childrenInherit = true
            for (const name of parts.concat("glow"))
                compare(frameOf(mirrored, name), frameOf(view, name), name)
            compare(reply(mirrored).mapToItem(mirrored, 0, 0).x, reply(view).mapToItem(view, 0, 0).x)
        }

        function test_keys_press_the_reply_data() {
            return [
                { tag: "Return", key: Qt.Key_Return },
                { tag: "Enter", key: Qt.Key_Enter },
                { tag: "Space", key: Qt.Key_Space }
            ]
        }

        function test_keys_press_the_reply(data) {
            const view = make()
            verify(reply(view).activeFocus)
            keyClick(data.key)
            compare(acknowledged.count, 1)
            verify(!part(view, "focusRing").visible)
        }

        function test_space_presses_when_it_is_let_go() {
            const view = make()
            keyPress(Qt.Key_Space)
            compare(acknowledged.count, 0)
            verify(reply(view).pressed)
            keyRelease(Qt.Key_Space)
            compare(acknowledged.count, 1)
            verify(!reply(view).pressed)
        }

        function test_a_key_let_go_that_was_pressed_elsewhere_does_nothing() {
            make()
            keyRelease(Qt.Key_Space)
            keyRelease(Qt.Key_Return)
            compare(acknowledged.count, 0)
        }

        function test_other_keys_only_show_where_the_keyboard_is_data() {
            return [
                { tag: "Tab", key: Qt.Key_Tab },
                { tag: "Backtab", key: Qt.Key_Backtab },
                { tag: "letter", key: Qt.Key_A },
                { tag: "Down", key: Qt.Key_Down }
            ]
        }

        function test_other_keys_only_show_where_the_keyboard_is(data) {
            const view = make()
            verify(!part(view, "focusRing").visible)
            keyClick(data.key)
            verify(part(view, "focusRing").visible)
            compare(part(view, "focusRing").border.color, "#f0d79b")
            verify(reply(view).activeFocus)
            compare(acknowledged.count, 0)
        }

        function test_escape_does_nothing() {
            const view = make()
            keyClick(Qt.Key_Escape)
            compare(acknowledged.count, 0)
            verify(!part(view, "focusRing").visible)
            verify(reply(view).activeFocus)
        }

        function test_without_a_reply_no_key_does_anything() {
            const view = make({ acknowledgeable: false })
            for (const key of [Qt.Key_Return, Qt.Key_Space, Qt.Key_Escape, Qt.Key_Tab])
                keyClick(key)
            compare(acknowledged.count, 0)
        }

        function test_the_pointer_presses_the_reply() {
            const view = make()
            const button = reply(view)
            const capsule = findChild(view, "capsule")
            mouseMove(button, button.width / 2, button.height / 2)
            compare(capsule.color.toString(), white(0.18))
            mousePress(button)
            compare(capsule.color.toString(), white(0.26))
            compare(acknowledged.count, 0)
            mouseRelease(button)
            compare(acknowledged.count, 1)
            compare(capsule.color.toString(), white(0.18))
            mouseMove(view, 5, 5)
            compare(capsule.color.toString(), white(0.12))
        }

        function test_a_click_beside_the_reply_does_nothing() {
            const view = make()
            mouseClick(view, 5, 5)
            mouseClick(part(view, "crown"))
            compare(acknowledged.count, 0)
        }

        function test_with_motion_the_reply_brightens_softly_and_presses_at_once() {
            const view = make({ reduceMotion: false })
            const button = reply(view)
            const capsule = findChild(view, "capsule")
            mouseMove(view, 5, 5)
            mouseMove(button, button.width / 2, button.height / 2)
            tryVerify(() => capsule.color.toString() === white(0.18), 15000)
            mousePress(button)
            compare(capsule.color.toString(), white(0.26))
            mouseRelease(button)
            tryVerify(() => capsule.color.toString() === white(0.18), 15000)
            mouseMove(view, 5, 5)
            tryVerify(() => capsule.color.toString() === white(0.12), 15000)
        }

        function test_a_screen_reader_finds_everything() {
            const view = make()
            compare(Accessibility.role(view), "container")
            compare(Accessibility.role(part(view, "crown")), "graphic")
            compare(Accessibility.name(part(view, "crown")), "Orvanta crown")
            for (const name of ["motto", "quotation", "attribution"]) {
                compare(Accessibility.role(part(view, name)), "text")
                compare(Accessibility.name(part(view, name)), part(view, name).text)
            }
            compare(Accessibility.role(reply(view)), "button")
            compare(Accessibility.name(reply(view)), "I will focus now")
            compare(Accessibility.children(view), ["Orvanta crown", "You own your time, your orvanta.",
                "Persevere in the exact fulfillment of the duties of the moment.", "The Way, 825", "I will focus now"])
        }

        function test_a_screen_reader_finds_no_reply_where_there_is_none() {
            const view = make({ acknowledgeable: false })
            compare(Accessibility.children(view).length, 4)
        }

        function test_a_screen_reader_presses_the_reply() {
            const view = make()
            verify(Accessibility.press(reply(view)))
            compare(acknowledged.count, 1)
        }
    }
}
