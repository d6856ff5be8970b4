#!/usr/bin/python
"""Tells which hotfix the instances of a host have."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
---
module: hotfix_status
short_description: Tells which hotfix the instances of a host have
version_added: "1.0.0"
description:
  - Asks C(hotfixctl status) on the host and returns its answer as facts.
  - Changes nothing and waits for nobody.
options:
  paths:
    description:
      - The instances to look at, each by its application bundle or its rcp home.
      - Without any, all that are registered and those in the applications folder.
    type: list
    elements: path
    default: []
  doctor:
    description: Whether to look for what a run has left half done as well.
    type: bool
    default: false
  hotfixctl:
    description: The program, where it is not found by its name.
    type: path
author:
  - HotfixInstaller (@hotfix-installer)
"""

EXAMPLES = r"""
- name: Ask for the hotfixes
  kiv.hotfix.hotfix_status:
    doctor: true

- name: Tell of those that need attention
  ansible.builtin.debug:
    msg: "{{ hotfix_status.instances | selectattr('state', 'equalto', 'needs-attention') }}"
"""

RETURN = r"""
ansible_facts:
  description: The facts that are set.
  returned: always
  type: dict
  contains:
    hotfix_status:
      description:
        - The answer of C(hotfixctl status), as its schema describes it.
        - C(status) is 0 when a hotfix is installed and all is well, 1 when none is installed,
          2 when something needs attention, 3 when there is no instance, 4 when one cannot be read.
      type: dict
      sample:
        status: 0
        instances:
          - bundle: /Applications/Quillmere.app
            state: hotfix-installed
            hotfix:
              version: 6.2.3.1
              identifier: com.quillmere.hotfix.6.2.3.1
"""

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.kiv.hotfix.plugins.module_utils.hotfixctl import Companion


def main():
    module = AnsibleModule(
        argument_spec={
            "paths": {"type": "list", "elements": "path", "default": []},
            "doctor": {"type": "bool", "default": False},
            "hotfixctl": {"type": "path"},
        },
        supports_check_mode=True,
    )
    arguments = (["--doctor"] if module.params["doctor"] else []) + module.params["paths"]
    answer = Companion(module).ask("status", *arguments)
    module.exit_json(changed=False, ansible_facts={"hotfix_status": answer})


if __name__ == "__main__":
    main()
