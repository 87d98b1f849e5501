# awk -f headers.awk HEADER: the header as Doxygen is to see it, line for line. In the sources one comment stands
# above overloads that follow one another, and above what sets and gets one value; the reference repeats it for each.
# What the compiler makes or refuses (= default, = delete) has nothing to be said about and is left out.

# The name that a declaration declares, without what tells the writing from the reading of a value.
function nameOf(line,    words, count) {
    gsub(/\[\[nodiscard\]\]|TW2_API|TW2_PLATFORM_API|noexcept/, "", line)
    if (match(line, /operator *(\(\)|[^ (A-Za-z]+)/)) {
        return substr(line, RSTART, RLENGTH)
    }
    sub(/\(.*/, "", line)
    sub(/( = |[;{:]).*/, "", line)
    gsub(/<[^<>]*>/, "", line)
    gsub(/<[^<>]*>/, "", line)
    count = split(line, words, /[ *&]+/)
    line = words[count]
    if (match(line, /^(get|set|access|is|has|enable|edit)[A-Z]/)) {
        line = substr(line, RLENGTH)
    }
    return line
}

/^#pragma once$/ { print "/** @file */ #pragma once"; next }
/= (default|delete);/ { print ""; next }
/^ *$/ { comment = ""; described = ""; print; next }
/^ *\/\/\/ @/ { comment = ""; described = ""; print; next }
/^ *\/\/\/ / {
    text = $0
    sub(/^ *\/\/\/ */, "", text)
    comment = (comment == "" ? "" : comment " ") text
    print
    next
}
/^ *\/\/\/$/ { print; next }
{
    match($0, /^ */)
    depth = RLENGTH
    if (comment != "") {
        described = nameOf($0)
        shared = comment
        indent = depth
        comment = ""
    } else if (described != "" && depth == indent && $0 !~ /^ *[{}]/ && $0 !~ / override/ && $0 !~ /\/\/\/</) {
        if (nameOf($0) == described) {
            printf "/** %s */ ", shared
        } else {
            described = ""
        }
    }
    print
}
