"""Text as mdoc wants it: no line begins with a control character, every sentence begins a line, and
no line is longer than 80 bytes."""

import re
import textwrap

# Words that end with a full stop within a sentence.
SENTENCE_END = re.compile(r"(?<![ (][a-z])([.!?][)\"']?) +(?=[A-Z(`\"])")


def escaped(text):
    return text.replace("\\", "\\e").replace("--", "\\-\\-")


def guarded(line):
    return "\\&" + line if line.startswith((".", "'")) else line


def sentences(text):
    return SENTENCE_END.sub("\\1\n", text).split("\n")


def prose(text):
    """Lines of one paragraph."""
    lines = []
    for sentence in sentences(escaped(" ".join(text.split()))):
        lines += textwrap.wrap(sentence, 76, break_long_words=False, break_on_hyphens=False) or [""]
    return [guarded(line) for line in lines]


def request(name, *words):
    """A macro line; a word with blanks is quoted."""
    shown = []
    for word in words:
        word = escaped(str(word))
        if word == "" or " " in word:
            word = '"' + word.replace('"', '""') + '"'
        elif len(word) <= 3 and re.fullmatch(r"[A-Z][a-z]|[.,:;()?!|\[\]]", word):
            word = "\\&" + word
        shown.append(word)
    return " ".join([f".{name}", *shown])


def literal_block(text):
    lines = [guarded(escaped(line)) for line in text.rstrip("\n").split("\n")]
    return [".Bd -literal -offset indent", *(line if line else "" for line in lines), ".Ed"]
