# Shows Doxygen what readers of the headers see: a comment is about what stands directly below it
# under one name, be it overloads, the setter and the getter of one thing, or == and !=, and about
# types, constants and the ends of a range that stand together. Each of them gets the comment. (As a
# member group they would share it, too, but Doxygen puts groups behind everything else.)

function depth_of(line) {
    sub(/\/\/.*/, "", line)
    return gsub(/[{(]/, "", line) - gsub(/[})]/, "", line)
}

# What a declaration is about, as far as its first line tells.
function subject_of(line,    name, arguments) {
    if (line ~ /operator[!=]=/)
        return "=="
    if (line ~ /operator(\*|->)/)
        return "the element"
    if (match(line, /operator[^(]*/))
        return substr(line, RSTART, RLENGTH)
    if (line ~ /^ *using /)
        return "types"
    if (line ~ /extern .*const /)
        return "constants"
    if (line ~ /[ ](c?r?begin|c?r?end)\(/)
        return "range"
    if (!match(line, /~?[A-Za-z_]+\(/))
        return ""
    name = substr(line, RSTART, RLENGTH - 1)
    arguments = substr(line, RSTART + RLENGTH)
    # Constructors that copy and that move.
    if (index(arguments, "const " name "&") == 1 || index(arguments, name "&&") == 1)
        return "copies"
    sub(/^(Get|Set|Is)/, "", name)
    return name
}

function finish(    i, j, comment) {
    for (i = first; members > 1 && lines[i] ~ /^ *\/\/\//; ++i)
        comment = comment lines[i] "\n"
    for (i = 1; i <= count; ++i) {
        for (j = 2; j <= members; ++j)
            if (starts[j] == i)
                printf "%s", comment
        print lines[i]
    }
    count = first = members = depth = open = ended = 0
}

# Instances of templates are nothing new.
/^extern template/ { skipping = 1 }
skipping {
    skipping = $0 !~ /;$/
    next
}

{
    is_comment = $0 ~ /^ *\/\/\//
    is_end = $0 ~ /^ *$/ || $0 ~ /^ *(public|protected|private):/ || $0 ~ /^ *#/ || \
        $0 ~ /^ *}/ || $0 ~ /^ *(class|struct|union|enum|namespace) [^;]*$/
    if (!open && depth == 0 && (is_end || (is_comment && members)))
        finish()
    lines[++count] = $0
    if (is_end && !open && depth == 0)
        next
    if (is_comment && first == 0)
        first = count
    if (is_comment || first == 0 || $0 ~ /^ *template </)
        next
    if (!open && depth == 0) {
        subject = subject_of($0)
        # The name may stand on the next line.
        if (subject == "" && $0 !~ /;/ && (getline next_line) > 0) {
            lines[++count] = next_line
            subject = subject_of(next_line)
            depth += depth_of($0)
            $0 = next_line
        }
        if (members && (ended || subject != theirs || subject == ""))
            ended = 1
        if (!members)
            theirs = subject
    }
    depth += depth_of($0)
    open = !(depth == 0 && $0 ~ /[;}]( *\/\/.*)?$/)
    if (!open && !ended) {
        # What precedes it since the last one, such as the head of a template, is part of it.
        starts[++members] = last + 1
        last = count
    }
}

END { finish() }
