#!/usr/bin/env python3
"""Types command lines into an interactive shell, presses the tab key behind each, and prints the
words that the shell then understands, a line each, and an empty line.

usage: complete.py bash|zsh TYPED...
"""
import re
import sys

import pexpect

PROMPT = "READY> "
SECONDS = 50

# The prompt is put together by the shell, so that the echo of the command is not taken for it.
BEGIN = {
    "bash": "PS1='READ''Y> '; bind 'set enable-bracketed-paste off'; "
            "source <(thermika completion bash)",
    "zsh": "PS1='READ''Y> '; bindkey -e; unset zle_bracketed_paste; PROMPT_EOL_MARK=; "
           "autoload -Uz compinit; compinit -u -D; source <(thermika completion zsh)",
}
ARGUMENTS = {"bash": ["--norc", "--noprofile", "-i"], "zsh": ["-f", "-i"]}


def main() -> int:
    shell, *lines = sys.argv[1:]
    child = pexpect.spawn(shell, ARGUMENTS[shell], encoding="utf-8", timeout=SECONDS,
                          dimensions=(50, 500))
    child.sendline(BEGIN[shell])
    child.expect_exact(PROMPT)
    found = True
    for typed in lines:
        # To the line's beginning, a command that prints words before it, to the line's end.
        child.send(typed + "\t\x01printf '<%s>\\n' \x05\r")
        child.expect(r"\n<")
        child.expect_exact(PROMPT)
        words = re.findall(r"^<?(.*)>\r$", child.before, re.MULTILINE)
        found = found and bool(words)
        print("\n".join(words) + "\n")
    child.close(force=True)
    return 0 if found else 1


if __name__ == "__main__":
    sys.exit(main())
