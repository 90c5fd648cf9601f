# typed.zsh SETUP SHELL...: types the lines of standard input at a prompt of the shell, a tab behind
# each, and prints what then stands there. SETUP makes Ctrl-T append the line to the file "typed"
# and empty it, and prints "ready" at its end.
zmodload zsh/zpty
: >typed
setup=$1
shift
zpty shell "$@"
zpty -w shell "$setup"
zpty -r shell seen '*ready*'
integer count=0
while read -r line; do
    zpty -w -n shell "$line"$'\t\x14'
    (( ++count ))
    until (( $(wc -l <typed) >= count )); do sleep 0.05; done
done
zpty -d shell
cat typed
