# SPDX-License-Identifier: MIT
"""Makes the golden files of a new version of the contract from what the program leaves now:

with_desktop --wm openbox -- env ZARN_BUILD=BUILD /usr/bin/python3 tests/end_to_end/make_contract.py VERSION
"""

import json
import os
import shutil
import sys

import contract
from world import DemoServer, Program, WorldTest


def run(server, *arguments):
    WorldTest().clear_world()
    WorldTest().accept_terms()
    program = Program(*arguments, environment={"SSL_CERT_FILE": server.ca_file, "no_proxy": "127.0.0.1,localhost"})
    try:
        contract.register(program.wait_for_window().screen, contract.PORT)
    finally:
        program.end()


def main(version):
    target = os.path.join(contract.FOLDER, version)
    os.makedirs(target)
    server = DemoServer("--https-port", str(contract.PORT), *contract.SERVER_OPTIONS)
    try:
        run(server)
        with open(os.path.join(target, "items.json"), "w", encoding="utf-8") as file:
            json.dump(contract.keyring_items(contract.PORT), file, indent=2, ensure_ascii=False, sort_keys=True)
            file.write("\n")
        run(server, "--keychain=file")
    finally:
        server.stop()
    os.mkdir(os.path.join(target, "config"))
    for name, text in contract.settings_texts(contract.PORT).items():
        with open(os.path.join(target, "config", name), "w", encoding="utf-8") as file:
            file.write(text)
    for folder, variable, name in (("data", "XDG_DATA_HOME", "keychain"), ("state", "XDG_STATE_HOME", "keychain.key")):
        os.mkdir(os.path.join(target, folder))
        shutil.copy(os.path.join(os.environ[variable], "zarn-actions", name), os.path.join(target, folder))


if __name__ == "__main__":
    main(sys.argv[1])
