#!/bin/sh
# check-commits.sh [RANGE]
# The form of commit messages: "area: imperative subject" of at most 72 characters without a full
# stop, an empty line, a body. Without RANGE: what is not in the upstream branch yet, or else the
# last commit.
set -eu
cd "$(dirname "$0")/.."

# Of a tree that is another user's git shows no history. Who runs this script from there trusts him.
export GIT_CONFIG_COUNT=1 GIT_CONFIG_KEY_0=safe.directory GIT_CONFIG_VALUE_0="$(pwd -P)"

if ! git rev-parse --verify -q HEAD >/dev/null 2>&1; then
    echo "no history here, nothing to check"
    exit 0
fi
if [ $# -gt 0 ]; then
    commits=$(git rev-list --no-merges "$1" --)
elif git rev-parse --verify -q '@{upstream}' >/dev/null 2>&1; then
    commits=$(git rev-list --no-merges '@{upstream}..' --)
else
    commits=$(git rev-list --no-merges -1 HEAD --)
fi

status=0
complain()
{
    echo "$(git log -1 --format='%h %s' "$commit"): $1"
    status=1
}

# No article, past tense, gerund or third person, as far as a word shows it.
imperative()
{
    case $1 in
        embed | exceed | feed | need | proceed | seed | speed | bring | ping | string) ;;
        *ss) ;;
        the | a | an | *ed | *ing | *s) return 1 ;;
    esac
}

for commit in $commits; do
    subject=$(git log -1 --format=%s "$commit")
    first_word=$(printf '%s\n' "$subject" | sed -nE 's|^[a-z0-9_./, -]+: ([a-z]+).*|\1|p')
    [ -n "$first_word" ] || complain 'not of the form "area: imperative subject"'
    imperative "$first_word" || complain "\"$first_word\" is no imperative"
    [ ${#subject} -le 72 ] || complain "a subject of ${#subject} characters, 72 are allowed"
    case $subject in *.) complain "a full stop behind the subject" ;; esac
    [ -z "$(git log -1 --format=%B "$commit" | sed -n 2p)" ] || complain "no empty line"
    [ -n "$(git log -1 --format=%b "$commit")" ] || complain "no body that says why and how"
done
echo "$(printf '%s\n' "$commits" | grep -c .) commits checked"
exit $status
