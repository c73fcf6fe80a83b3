#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# A private system bus with python-dbusmock's logind, upower and networkmanager templates,
# for the event tests. It prints the bus address, then runs one line of Python per input
# line with `bus`, `logind`, `upower`, `nm`, `obj(name, path)` and `MOCK` in scope, and
# answers "ok <repr of the value>" or "error <message>". The bus and the mocks end with
# its input.
import os
import subprocess
import sys

import dbus
import dbusmock
from dbusmock import DBusTestCase

MOCK = dbusmock.MOCK_IFACE


def main():
    # The mocks run under this interpreter, the system's, which has python3-dbusmock.
    sys.executable = '/usr/bin/python3'
    DBusTestCase.start_system_bus()
    mocks = []
    try:
        spawned = {}
        for template in ('logind', 'upower', 'networkmanager'):
            daemon, main_obj = DBusTestCase.spawn_server_template(
                template, {}, stdout=subprocess.DEVNULL)
            mocks.append(daemon)
            spawned[template] = main_obj
        bus = DBusTestCase.get_dbus(system_bus=True)

        def obj(name, path):
            return bus.get_object(name, path)

        scope = {'bus': bus, 'dbus': dbus, 'MOCK': MOCK, 'obj': obj,
                 'logind': spawned['logind'], 'upower': spawned['upower'],
                 'nm': spawned['networkmanager']}
        print(os.environ['DBUS_SYSTEM_BUS_ADDRESS'], flush=True)
        for line in sys.stdin:
            line = line.strip()
            if not line:
                continue
            try:
                try:
                    code = compile(line, '<test>', 'eval')
                except SyntaxError:
                    exec(compile(line, '<test>', 'exec'), scope)
                    value = None
                else:
                    value = eval(code, scope)
                print('ok ' + repr(value).replace('\n', ' '), flush=True)
            except Exception as e:  # pylint: disable=broad-except
                print('error ' + str(e).replace('\n', ' '), flush=True)
    finally:
        for daemon in mocks:
            daemon.terminate()
            daemon.wait()
        DBusTestCase.tearDownClass()


if __name__ == '__main__':
    main()
