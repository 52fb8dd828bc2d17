# Turns what CHANGELOG.md says about a version into a changelog as Debian's packages have them, which is
# narrower:
#   awk -v version=... -v date=... -v contact=... -f changelog.awk CHANGELOG.md

function put(word) {
    if (length(line) + 1 + length(word) > 79) {
        print line
        line = "   "
    }
    line = line " " word
}

function finish() {
    if (line != "")
        print line
    line = ""
}

BEGIN { print "kescorexml (" version ") unstable; urgency=medium\n" }
/^## / { inside = index($0, "[" version "]") > 0 }
!inside { next }
/^- / || /^  [^ ]/ {
    if (sub(/^- /, "")) {
        finish()
        line = "  *"
        ++entries
    }
    gsub(/`/, "")
    for (i = 1; i <= NF; ++i)
        put($i)
}
END {
    finish()
    print "\n -- " contact "  " date
    exit entries == 0
}
