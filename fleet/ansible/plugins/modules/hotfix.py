#!/usr/bin/python
"""Installs a hotfix into an instance, or removes the one that it has."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
---
module: hotfix
short_description: Installs a hotfix into an instance, or removes the one that it has
version_added: "1.0.0"
description:
  - Brings an instance to a state by C(hotfixctl) on the host.
  - Nothing is done, and nothing reported as changed, where the package's version is recorded
    already, or where no hotfix is recorded that could be removed.
  - What went wrong is told in C(msg), with what to do now.
options:
  state:
    description:
      - C(present) installs I(package); an older hotfix is removed by that.
      - C(absent) removes the hotfix that is recorded in I(bundle).
    type: str
    choices: [present, absent]
    default: present
  package:
    description:
      - The package's folder on the host. What lies beside it, C(deploy) and the update site, has
        to be in its place.
    type: path
  destination:
    description: The folder on the host that the application is in.
    type: path
    default: /Applications
  bundle:
    description: The instance, by its application bundle or its rcp home.
    type: path
  rcpdata:
    description: The rcp data folder, where it is not in the instance.
    type: path
  user:
    description: Whose the instance is to be afterwards; the one who has it up to now unless given.
    type: str
  lint:
    description: Whether to refuse a package in which C(hotfixctl lint) finds errors.
    type: bool
    default: false
  wait:
    description: For how many seconds an installation waits for another one on the host.
    type: int
    default: 0
  time_limit:
    description: After how many seconds an installation is asked to end; without it, never.
    type: int
  force:
    description:
      - Installs even when the version is recorded already, and removes even when the record and
        the instance disagree.
    type: bool
    default: false
  hotfixctl:
    description: The program, where it is not found by its name.
    type: path
author:
  - HotfixInstaller (@hotfix-installer)
attributes:
  check_mode:
    support: full
    description: Tells what C(hotfixctl plan) foresees.
  diff_mode:
    support: partial
    description: >-
      Shows the changes that C(hotfixctl plan) foresees, settings with their values, and nothing of a
      removal.
"""

EXAMPLES = r"""
- name: Install the hotfix
  kiv.hotfix.hotfix:
    package: /srv/hotfixes/6.2.3.1/mac/HF.pkg
    destination: /Applications
    user: alice
    wait: 600

- name: Take it back
  kiv.hotfix.hotfix:
    bundle: /Applications/Quillmere.app
    state: absent
"""

RETURN = r"""
cause:
  description:
    - Why it ended as it did, or would, in one word of C(hotfixctl install) or C(hotfixctl remove).
    - In check mode null where the launcher is what fails.
  returned: when something was done, or cannot be done
  type: str
  sample: application-running
versions:
  description: The version of the package, and those recorded before and after.
  returned: I(state=present)
  type: dict
kept_run:
  description: The folder on the host with all that is left of the run.
  returned: when an installation was begun
  type: str
due:
  description: Whether there was anything to install.
  returned: I(state=present)
  type: bool
answer:
  description: The answer of hotfixctl; of a plan without its changes, output and log, which may be long.
  returned: always
  type: dict
"""

import os
import pwd

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.kiv.hotfix.plugins.module_utils.hotfixctl import Companion, told

def data_folder(parameters):
    return ["-rcpdata", parameters["rcpdata"]] if parameters["rcpdata"] else []


def variables(parameters):
    return {"USER": parameters["user"]} if parameters["user"] else {}


def owner_of(instance):
    """Who has the instance, where that is not root: a connection's own user would make it root's."""
    try:
        owner = os.stat(os.path.join(instance["rcpHome"], "deploy")).st_uid
        return pwd.getpwuid(owner).pw_name if owner != 0 else None
    except (KeyError, OSError, TypeError):
        return None


def plan_of(module, companion):
    """What the installation would do, and the outcome that the module has without doing it."""
    parameters = module.params
    arguments = data_folder(parameters) + [parameters["package"], parameters["destination"]]
    plan = companion.ask("plan", *arguments, **variables(parameters))
    if not parameters["user"]:
        parameters["user"] = owner_of(plan["instance"])
        if parameters["user"]:
            plan = companion.ask("plan", *arguments, **variables(parameters))
    versions = plan["versions"]
    # A package without a version records nothing that could tell that it is there.
    due = parameters["force"] or versions["package"] is None or versions["package"] != versions["before"]
    answer = {name: value for name, value in plan.items() if name not in ("changes", "log", "output")}
    outcome = {"changed": due, "due": due, "versions": versions, "answer": answer}
    if due and module._diff:
        outcome["diff"] = {"prepared": companion.text(
            "plan", "--diff", *arguments, **variables(parameters))}
    return plan, outcome


def install(module, companion):
    plan, outcome = plan_of(module, companion)
    if not outcome["changed"]:
        module.exit_json(**outcome)
    if module.check_mode:
        if plan["status"] != 0:
            outcome["changed"] = False
            error = plan["error"]
            module.fail_json(msg=told(error, "meaning", "remedy") or "The launcher would not install it.",
                             cause=error["cause"], **outcome)
        module.exit_json(**outcome)
    parameters = module.params
    arguments = ["--wait", str(parameters["wait"])] + data_folder(parameters)
    if parameters["lint"]:
        arguments.append("--lint")
    if parameters["time_limit"] is not None:
        arguments += ["--time-limit", str(parameters["time_limit"])]
    answer = companion.ask("install", *(arguments + [parameters["package"], parameters["destination"]]),
                           **variables(parameters))
    outcome.update(answer=answer, cause=answer["cause"], kept_run=answer["keptRun"],
                   versions=answer["versions"])
    if answer["status"] != 0:
        # A failing provisioning has taken the older hotfix away all the same.
        outcome["changed"] = answer["versions"]["before"] != answer["versions"]["after"]
        module.fail_json(msg=told(answer, "meaning", "line", "remedy"), **outcome)
    module.exit_json(**outcome)


def remove(module, companion):
    parameters = module.params
    status = companion.ask("status", parameters["bundle"])
    instance = status["instances"][0] if status["instances"] else {}
    if not instance or instance["state"] in ("no-instance", "not-readable"):
        module.fail_json(msg=told(instance, "reason") or "There is no such instance.", answer=status)
    if not instance["hotfix"] and not parameters["force"]:
        module.exit_json(changed=False, answer=status)
    if module.check_mode:
        module.exit_json(changed=bool(instance["hotfix"]) or instance["state"] == "needs-attention",
                         answer=status)
    arguments = data_folder(parameters) + (["--force"] if parameters["force"] else [])
    answer = companion.ask("remove", *(arguments + [parameters["bundle"]]), **variables(parameters))
    outcome = {"answer": answer, "cause": answer["outcome"],
               "changed": answer["outcome"] in ("removed", "forgotten")}
    if answer["outcome"] not in ("removed", "forgotten", "nothing-installed"):
        outcome["changed"] = bool(answer["after"]) and answer["after"]["hotfix"] != answer["hotfix"]
        module.fail_json(msg=told(answer, "reason", "remedy") or answer["outcome"], **outcome)
    module.exit_json(**outcome)


def main():
    module = AnsibleModule(
        argument_spec={
            "state": {"type": "str", "choices": ["present", "absent"], "default": "present"},
            "package": {"type": "path"},
            "destination": {"type": "path", "default": "/Applications"},
            "bundle": {"type": "path"},
            "rcpdata": {"type": "path"},
            "user": {"type": "str"},
            "lint": {"type": "bool", "default": False},
            "wait": {"type": "int", "default": 0},
            "time_limit": {"type": "int"},
            "force": {"type": "bool", "default": False},
            "hotfixctl": {"type": "path"},
        },
        required_if=[("state", "present", ["package"]), ("state", "absent", ["bundle"])],
        supports_check_mode=True,
    )
    companion = Companion(module)
    if module.params["state"] == "present":
        install(module, companion)
    else:
        remove(module, companion)


if __name__ == "__main__":
    main()
