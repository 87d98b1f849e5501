# awk -f pages.awk PAGE.md: a page of the documentation as Doxygen is to see it. Its headings get names, and its links,
# which lead to files here and to headings by their words, lead to pages of the site.

# The name that the site has for a page.
function pageOf(file) {
    if (file == "README.md") {
        return "mainpage"
    }
    if (file == "platform/README.md") {
        return "porting"
    }
    sub(/.*\//, "", file)
    sub(/\.md$/, "", file)
    return tolower(file)
}

# A heading's words as a link has them.
function wordsOf(heading) {
    heading = tolower(heading)
    gsub(/[^a-z0-9 _-]/, "", heading)
    gsub(/ /, "-", heading)
    return heading
}

# `target`, seen from the folder of this page, from the project's folder.
function fromRoot(target,    folder) {
    folder = FILENAME
    if (!sub(/\/[^\/]*$/, "", folder)) {
        folder = ""
    }
    while (sub(/^\.\.\//, "", target)) {
        if (!sub(/\/[^\/]*$/, "", folder)) {
            folder = ""
        }
    }
    return folder == "" ? target : folder "/" target
}

function linkTo(text, target,    file, words) {
    if (target ~ /^[a-z]+:/) {
        return "[" text "](" target ")"
    }
    words = target
    if (!sub(/^[^#]*#/, "", words)) {
        words = ""
    }
    sub(/#.*/, "", target)
    file = target == "" ? FILENAME : fromRoot(target)
    if (file ~ /\.md$/) {
        file = pageOf(file)
        if (file == "mainpage") {
            return "[" text "](index.html)"
        }
        return "[" text "](@ref " file (words == "" ? "" : "_" words) ")"
    }
    if (file ~ /^examples\/[^\/]*\.cpp$/) {
        sub(/.*\//, "", file)
        sub(/\.cpp$/, "_8cpp-example.html", file)
        return "<a href=\"" file "\">" text "</a>"
    }
    return text
}

function links(line,    result, text, target, cut) {
    result = ""
    while (match(line, /!?\[[^][]*\]\([^()]*\)/)) {
        result = result substr(line, 1, RSTART - 1)
        text = substr(line, RSTART, RLENGTH)
        line = substr(line, RSTART + RLENGTH)
        cut = index(text, "](")
        target = substr(text, cut + 2, length(text) - cut - 2)
        if (text ~ /^!/) {
            sub(/.*\//, "", target)
            result = result "![" substr(text, 3, cut - 3) "](" target ")"
        } else {
            result = result linkTo(substr(text, 2, cut - 2), target)
        }
    }
    return result line
}

FNR == 1 { page = pageOf(FILENAME) }
/^```/ { code = !code }
code || /^```/ { print; next }
/^# / {
    gsub(/`/, "")
    print links($0) " {#" page "}"
    next
}
/^##+ / {
    heading = $0
    sub(/^#+ /, "", heading)
    print links($0) " {#" page "_" wordsOf(heading) "}"
    next
}
{ print links($0) }
