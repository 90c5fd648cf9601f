"""orblink-messages(7), from docs/messages.toml."""

import tomllib

import mdoc

SECTIONS = (
    ("error", "FAILURES", "Severity 1: a call failed. Two of these lines are progress."),
    ("notice", "NOTICES", "Severity 2: a refusal or an absence that the operator should notice."),
    ("info", "PROGRESS", "Severity 3."),
    ("mailbox", "MAILBOX",
     "On the standard output of the process that receives the board data."),
    ("trace", "TRACES", "Severity 9: off unless a program asks for them."),
)


def entry(row):
    lines = []
    for line in row["lines"][:-1]:
        lines.append(".It Li " + item(line))
    last = row["lines"][-1]
    lines += [".It Li " + item(last), *mdoc.prose(row["means"]), ".Pp", ".Em To do :",
              *mdoc.prose(row["do"])]
    return lines


def item(line):
    shown = mdoc.escaped(line if line else "(nothing but function and line)")
    if shown[-1] in ".,:;!?)":
        shown += "\\&"  # part of the line, no punctuation of the page
    return '"' + shown.replace('"', '""') + '"'


def listed(rows):
    lines = [".Bl -tag -width Ds -compact"]
    for place, row in enumerate(rows):
        lines += ([".Pp"] if place else []) + entry(row)
    return lines + [".El"]


def text(root, date):
    with open(root / "docs/messages.toml", "rb") as file:
        table = tomllib.load(file)
    lines = [f".Dd {date}", ".Dt ORBLINK-MESSAGES 7", ".Os", ".Sh NAME",
             ".Nm orblink-messages", ".Nd what the lines of OrbLink mean, and what to do",
             ".Sh DESCRIPTION",
             "The library logs through its platform, as a rule to the system log.",
             "Most lines begin with the name of a function and a source line, which are",
             "left out here;", ".Ql %d , %s", "and the like stand for values.",
             "A failing call writes a line where the failure began, and then one for each",
             "step that failed by it: the first line has the cause.",
             "A number after errno is the kernel's."]
    for severity, title, about in SECTIONS:
        rows = [row for row in table["library"] if row["severity"] == severity]
        lines += [f".Sh {title}", *mdoc.prose(about), *listed(rows)]
    lines += [".Sh COMPLAINTS OF ORBLINKCTL", "A complaint of", ".Xr orblinkctl 1",
              "names the object, what was not done, and the reason.",
              ".Ss What was not done", *listed(table["refusal"]),
              ".Ss Why", *listed(table["reason"]),
              ".Ss What stands alone", "Three dots stand for what the command or the board names.",
              *listed(table["failure"]),
              ".Sh COMPLAINTS AT BOOT",
              "In the log of", ".Ql orblink-config.service :", "one line, of one or two of these.",
              *listed(table["boot"]),
              ".Sh SWITCHES THAT LINUX DRIVES",
              "Lines of the HAL library", ".Ql liborblink_linux.so",
              "in the log.", "All but one are of severity 1: the slot has failed, and what it had",
              "done is taken back.",
              *listed(table["hal"]),
              ".Ss What the kernel means", *listed(table["kernel"]),
              ".Sh SEE ALSO", ".Xr orblinkctl 1 ,", ".Xr orblink 7"]
    return "\n".join(lines) + "\n"
