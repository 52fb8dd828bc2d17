# Makes of a page what Doxygen understands. It does not know Mermaid but has Graphviz: a line "a --> b"
# of a flowchart is an edge. And it looks for commands in the code of tables.
# With what is special escaped.
function as_code(text) {
    gsub(/&/, "\\&amp;", text)
    gsub(/</, "\\&lt;", text)
    gsub(/>/, "\\&gt;", text)
    gsub(/@|[*]|#/, "\\\\&", text)
    gsub(/--/, "\\--", text)
    return "<code>" text "</code>"
}
/^```mermaid/ {
    inside = 1
    print "@dot"
    print "digraph rooms {"
    print "rankdir=TB; bgcolor=transparent;"
    print "node [shape=box style=\"rounded,filled\" fillcolor=\"#eef3f8\" color=\"#5b7ea6\" fontname=Helvetica fontsize=11];"
    print "edge [color=\"#5b7ea6\" arrowsize=0.7];"
    next
}
inside && /^```/ {
    inside = 0
    print "}"
    print "@enddot"
    next
}
inside && / --> / {
    print "\"" $1 "\" -> \"" $3 "\";"
    next
}
inside && /^flowchart TD$/ { next }
inside {
    print FILENAME ":" FNR ": this part of a diagram cannot be drawn" >"/dev/stderr"
    exit 1
}
/^[|]/ {
    count = split($0, part, "`")
    line = part[1]
    for (i = 2; i <= count; i++)
        line = line (i % 2 == 0 ? as_code(part[i]) : part[i])
    print line
    next
}
{ print }
