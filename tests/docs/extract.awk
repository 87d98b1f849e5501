# awk -v page=motion -v source=docs/motion.md -v folder=DIR -f extract.awk docs/motion.md
#
# Takes the snippets out of a page: of C++ every whole program into a source of its own (PAGE_program_N.cpp, its main
# under another name) and all other pieces, as a function each, into PAGE_pieces.cpp, which begins with context.h;
# scripts into PAGE_N.script; commands into PAGE_N.sh; the rest by its language. Errors of the compiler name the page and
# the line. A piece that several blocks of a page make together is continued by <!-- snippet: goes on --> above a block.

function finish(    file, text, i) {
    if (language == "cpp" && body ~ /int main\(/) {
        file = folder "/" page "_program_" ++programs ".cpp"
        sub(/int main\(/, "int " page "_program_" programs "(", body)
        sub(/}\n$/, "return 0;\n}\n", body)  # which only main may leave out
        printf "#line %d \"%s\"\n%s", first, source, body > file
        close(file)
    } else if (language == "cpp") {
        text = ""
        count = split(body, lines, "\n")
        for (i = 1; i < count; ++i) {
            if (lines[i] ~ /^#include/) {
                includes = includes lines[i] "\n"
                lines[i] = ""
            }
            text = text lines[i] "\n"
        }
        if (!goesOn && pieces > 0) {
            code = code "}\n"
        }
        if (!goesOn || pieces == 0) {
            code = code "void piece" ++pieces "()\n{\n"
        }
        code = code sprintf("#line %d \"%s\"\n%s", first, source, text)
    } else if (language != "") {
        file = folder "/" page "_" first "." language
        printf "%s", body > file
        close(file)
    }
    goesOn = 0
}

/^<!-- snippet: goes on -->$/ { goesOn = 1 }
/^```/ {
    if (open) {
        finish()
        open = 0
    } else {
        open = 1
        language = substr($0, 4)
        first = NR + 1
        body = ""
    }
    next
}
open { body = body $0 "\n" }
END {
    if (open) {
        printf "%s: the block that begins in line %d has no end\n", source, first > "/dev/stderr"
        exit 1
    }
    if (pieces > 0) {
        file = folder "/" page "_pieces.cpp"
        printf "%s#include \"context.h\"\nnamespace\n{\n%s}\n}  // namespace\n", includes, code > file
    }
}
