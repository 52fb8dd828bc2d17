# Draws the diagrams of a page for Doxygen, which does not know Mermaid but has Graphviz: a line
# "a --> b" of a flowchart is an edge.
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
{ print }
