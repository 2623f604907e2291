#!/usr/bin/env python3
"""What Show does: the windows of the program and of what it has started come to the front, from
wherever they are, and nobody else's do."""

import os
import signal
import socket
import unittest

from Desktop import awaitCondition
from Screen import Screen, onEveryDesktop
from StatusItems import StatusItemTests, descendants


def terminal(title):
    """A command that has a window of this title, which a shell in it would change, and that does
    not complain of missing fonts."""
    return ["/bin/sh", "-c", f"exec {command(title)}"]


def command(title):
    return f"xterm -T {title} -e sleep 1000 2>/dev/null"


def end(process):
    try:
        os.kill(process, signal.SIGKILL)
    except ProcessLookupError:
        pass  # it has ended with what it had started


class ShowTests(StatusItemTests):
    def setUp(self):
        self.screen = Screen(self.user)
        self._others = []
        self.addCleanup(self._endOthers)

    def _endOthers(self):
        for process in self._others:
            for child in descendants(process.pid):
                end(child)
            process.communicate()

    def other(self, title):
        """A window of a program that is no part of any instance."""
        self._others.append(self.user.start(*terminal(title)))
        return self.screen.window(title)

    def script(self, *lines):
        """A program that starts others and waits for them."""
        return self.program("#!/bin/sh\n" + "\n".join(lines) + "\nwait\n")

    def showing(self, *command, titles, **configuration):
        """An instance, its item and its windows from the lowest to the highest."""
        instance, item = self.started(*command, **configuration)
        windows = [self.screen.window(title) for title in titles]
        for window in windows:
            self.screen.raiseWindow(window)
        return instance, item, windows

    def finish(self, instance):
        program = instance.programPid()
        for process in (*descendants(program), program):
            end(process)
        _, output, errors = instance.ended()
        self.assertEqual((output, errors, instance.log()), ("", "", ""))
        self.assertNoItems()


class Windows(ShowTests):
    def test_a_covered_window_comes_to_the_front(self):
        instance, item, windows = self.showing(*terminal("Mine"), titles=["Mine"])
        other = self.other("Another")
        self.screen.raiseWindow(other)

        item.choose(f"Show {instance.name}")

        self.screen.awaitOnTop([other, *windows])
        self.finish(instance)

    def test_a_click_on_Show_does_the_same(self):
        instance, _, windows = self.showing(*terminal("Mine"), titles=["Mine"])
        self.screen.raiseWindow(self.other("Another"))

        self.panel.openMenu().click("Show")

        self.screen.awaitOnTop(windows)
        self.panel.pointAway()
        self.finish(instance)

    def test_the_windows_of_children_come_in_the_order_that_they_have(self):
        program = self.script(f"{command('One')} &", f"({command('Two')}; true) &",
                              f"{command('Three')} &")
        for titles in [["One", "Two", "Three"], ["Three", "One", "Two"]]:
            instance, item, windows = self.showing(program, titles=titles)
            other = self.other("Another")
            self.screen.raiseWindow(other)

            item.choose(f"Show {instance.name}")

            self.screen.awaitOnTop([other, *windows])
            self.finish(instance)
            self._endOthers()
            self._others.clear()

    def test_minimised_windows_are_shown_again(self):
        program = self.script(f"{command('One')} &", f"{command('Two')} &")
        instance, item, (one, two) = self.showing(program, titles=["One", "Two"])
        other = self.other("Another")
        for minimised in ([one], [two], [one, two]):
            for window in minimised:
                self.screen.minimise(window)
            self.screen.raiseWindow(other)

            item.choose(f"Show {instance.name}")

            awaitCondition(lambda: not any(map(self.screen.isMinimised, minimised)),
                           lambda: f"{minimised} are still minimised")
            awaitCondition(lambda: set(self.screen.stacking()[-2:]) == {one, two},
                           lambda: f"{self.screen.stacking()}")
        self.finish(instance)

    def test_windows_of_other_desktops_are_brought_here(self):
        program = self.script(f"{command('One')} &", f"{command('Two')} &")
        instance, item, (one, two) = self.showing(program, titles=["One", "Two"])
        other = self.other("Another")
        self.screen.move(one, 2)
        self.screen.minimise(two)
        self.screen.move(two, 3)
        self.screen.raiseWindow(other)
        here = self.screen.desktop()

        item.choose(f"Show {instance.name}")

        awaitCondition(lambda: set(self.screen.stacking()[-2:]) == {one, two},
                       lambda: f"{self.screen.stacking()}")
        awaitCondition(lambda: [self.screen.desktop(one), self.screen.desktop(two)] == [here] * 2,
                       lambda: f"{self.screen.desktop(one)}, {self.screen.desktop(two)}")
        awaitCondition(lambda: not self.screen.isMinimised(two), lambda: "it is still minimised")
        self.assertEqual(self.screen.desktop(), here)
        self.assertEqual(self.screen.desktop(other), here)
        self.finish(instance)

    def test_a_window_on_every_desktop_stays_there(self):
        instance, item, windows = self.showing(*terminal("Mine"), titles=["Mine"])
        self.screen.move(windows[0], -1)
        self.screen.raiseWindow(self.other("Another"))

        item.choose(f"Show {instance.name}")

        self.screen.awaitOnTop(windows)
        self.assertEqual(self.screen.desktop(windows[0]), onEveryDesktop)
        self.finish(instance)

    def test_what_a_window_says_of_its_process_is_not_all_that_is_looked_at(self):
        instance, item, (mine,) = self.showing(*terminal("Mine"), titles=["Mine"])
        other = self.other("Another")
        # None, one of another system, and that of nobody.
        says = ["-f", "_NET_WM_PID", "32c", "-set", "_NET_WM_PID"]
        for change in [["-remove", "_NET_WM_PID"], [*says, "1"], [*says, "0"]]:
            self.screen.change(mine, *change)
            self.screen.raiseWindow(other)
            item.choose(f"Show {instance.name}")
            self.screen.awaitOnTop([other, mine])
        self.finish(instance)

    def test_a_program_that_started_another_way_is_found_by_what_it_is_below(self):
        program = self.script(f"setsid {command('Session')} &",
                              f"nohup sh -c '{command('Hup')}; true' &")
        instance, item, windows = self.showing(program, titles=["Session", "Hup"])
        self.screen.raiseWindow(self.other("Another"))

        item.choose(f"Show {instance.name}")

        self.screen.awaitOnTop(windows)
        self.finish(instance)

    def test_what_its_parent_has_left_is_shown_too(self):
        program = self.program(f"#!/bin/sh\n(setsid {command('Left')} &)\nexec sleep 1000\n")
        instance, item, windows = self.showing(program, titles=["Left"])
        self.screen.raiseWindow(self.other("Another"))

        item.choose(f"Show {instance.name}")

        self.screen.awaitOnTop(windows)
        self.user.run("wmctrl", "-i", "-c", windows[0])
        awaitCondition(lambda: windows[0] not in self.screen.stacking(), lambda: "it stays")
        self.finish(instance)

    def test_windows_of_others_stay_as_they_are(self):
        instance, item, (mine,) = self.showing(*terminal("Mine"), titles=["Mine"])
        second, _, (ofSecond,) = self.showing(*terminal("Second"), titles=["Second"])
        minimised, elsewhere, covering = map(self.other, ["Minimised", "Elsewhere", "Covering"])
        self.screen.move(elsewhere, 1)
        self.screen.minimise(minimised)
        self.screen.minimise(ofSecond)
        self.screen.raiseWindow(covering)

        item.choose(f"Show {instance.name}")

        self.screen.awaitOnTop([covering, mine])
        self.assertTrue(self.screen.isMinimised(minimised))
        self.assertTrue(self.screen.isMinimised(ofSecond))
        self.assertEqual(self.screen.desktop(elsewhere), 1)
        os.kill(second.programPid(), signal.SIGKILL)
        second.ended()
        self.finish(instance)

    def test_a_program_that_does_not_move_is_shown_too(self):
        instance, item, windows = self.showing(*terminal("Mine"), titles=["Mine"])
        self.screen.raiseWindow(self.other("Another"))
        os.kill(instance.programPid(), signal.SIGSTOP)

        item.choose(f"Show {instance.name}")

        self.screen.awaitOnTop(windows)
        os.kill(instance.programPid(), signal.SIGCONT)
        self.finish(instance)

    def test_Show_again_and_again_costs_nothing_that_stays(self):
        instance, item, windows = self.showing(*terminal("Mine"), titles=["Mine"])
        other = self.other("Another")

        def counted():
            process = f"/proc/{instance.pid()}"
            return len(os.listdir(f"{process}/fd")), len(os.listdir(f"{process}/task"))
        counts = []
        for _ in range(20):
            self.screen.raiseWindow(other)
            for _ in range(10):
                item.choose(f"Show {instance.name}")
            self.screen.awaitOnTop(windows)
            counts.append(counted())
        awaitCondition(lambda: counted() <= counts[0], lambda: f"{counts}, {counted()}")
        self.finish(instance)


class WithoutWindows(ShowTests):
    def assertShowDoesNothing(self, **environment):
        instance = self.recording()
        instance.start(**environment)
        item = self.itemOf(instance)
        instance.awaitLog("ready\n")
        other = self.other("Another")
        self.screen.raiseWindow(other)
        for _ in range(5):
            item.choose(f"Show {instance.name}")
        item.choose(f"Quit {instance.name}")
        instance.awaitLog("ready\nSIGTERM\n")
        self.assertTrue(item.isThere())
        instance.finish(4)
        status, output, errors = instance.ended()
        self.assertEqual((status, output), (4, ""))
        self.assertEqual(instance.log(), "ready\nSIGTERM\n")
        self.assertEqual(self.screen.active(), other)
        self._endOthers()
        self._others.clear()
        self.assertNoItems()
        return errors

    def test_a_program_without_windows_stays_without(self):
        self.assertEqual(self.assertShowDoesNothing(), "")

    def test_without_a_display_that_can_be_reached_nothing_happens(self):
        for display in [None, "", ":77777", "nonsense", "no.such.host.invalid:0"]:
            with self.subTest(display):
                self.assertEqual(self.assertShowDoesNothing(DISPLAY=display), "")
        # Of a server that lets nobody in, the library that is asked complains by itself.
        self.assertShowDoesNothing(XAUTHORITY="/dev/null")

    def test_on_Wayland_nothing_happens(self):
        self.assertEqual(self.assertShowDoesNothing(
            DISPLAY=None, WAYLAND_DISPLAY="wayland-0", XDG_SESSION_TYPE="wayland"), "")

    def test_a_display_that_does_not_answer_holds_nothing_up(self):
        with socket.socket() as silent:
            silent.bind(("127.0.0.1", 0))
            port = silent.getsockname()[1]
            number = port - 6000
            self.assertGreater(number, 0)
            silent.listen(16)
            self.assertEqual(self.assertShowDoesNothing(DISPLAY=f"127.0.0.1:{number}"), "")


if __name__ == "__main__":
    unittest.main()
