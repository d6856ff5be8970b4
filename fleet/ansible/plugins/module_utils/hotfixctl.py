"""How modules run hotfixctl and read its answers."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json


class Companion(object):
    """hotfixctl on the host. Whatever is not an answer of it ends the module with a message."""

    def __init__(self, module):
        self._module = module
        self._program = module.params["hotfixctl"] or module.get_bin_path(
            "hotfixctl", required=True, opt_dirs=["/usr/local/bin", "/opt/homebrew/bin"])

    def ask(self, command, *arguments, **variables):
        """The answer of a command, as its JSON document."""
        status, out, err = self._module.run_command(
            [self._program, command, "--json"] + list(arguments), environ_update=variables)
        try:
            answer = json.loads(out)
        except ValueError:
            answer = None
        if not isinstance(answer, dict) or answer.get("schema") != "hotfixctl/%s/1" % command:
            self._module.fail_json(
                msg="hotfixctl %s gave no answer: %s" % (command, err.strip() or "status %d" % status),
                rc=status, stdout=out, stderr=err)
        return answer

    def text(self, command, *arguments, **variables):
        """The same for people."""
        return self._module.run_command(
            [self._program, command, "--color", "never"] + list(arguments),
            environ_update=variables)[1]


def told(answer, *names):
    """The values of an answer that say something, as one text."""
    return " ".join(answer[name] for name in names if answer.get(name))
