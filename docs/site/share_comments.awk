# The headers write a comment once for the declarations that it is about, and what a whole group has in common at its head. For
# the reference, each of them gets a copy: an overload, an accessor of the same value, an assignment, and what follows "Both" or
# "All" that of the declaration above; any other one without a comment that of its group. Lines stay where they are.

function text(line)
{
    sub(/^ *\/\/\/ ?/, "", line)
    return line
}

function ended(sentence)
{
    return sentence ~ /[.:;?]$/ ? sentence : sentence "."
}

function name_of(line)
{
    sub(/ *(=|;).*$/, "", line)
    if (line ~ /operator/) sub(/^.*operator *\(?/, "operator", line)
    sub(/\(.*$/, "", line)
    sub(/^.*[ *&]/, "", line)
    return line
}

function value_of(name)
{
    sub(/^(get|ref|set|reset)/, "", name)
    return name
}

function shares(line, name)
{
    if (block == "" || line ~ /^    (explicit |constexpr )*[A-Z][A-Za-z0-9_]*\(/) return 0
    if (block ~ /^(Both|All) |[,;] (both|all)\.$|hooks/) return 1
    if (line ~ /operator=\(/) return owner ~ /^(operator|[A-Z])/ || owner == ""
    return name == owner || (name ~ /^(get|ref|set|reset)[A-Z]/ && value_of(name) == value_of(owner))
}

/^ *\/\/\/ @name / { group = ended(substr(text($0), 7)); block = ""; in_head = 1; print; next }
# The end of the head is a comment of its own, so that it does not take the next one in.
/^ *\/\/\/ @\{/ { in_head = 0; sub(/\/\/\/ @\{/, "/** @{ */"); print; next }
/^ *\/\/\/ @\}/ { group = ""; block = ""; print; next }
/^ *\/\/\// {
    if (in_head) group = group " " text($0)
    else block = was_comment ? block " " text($0) : text($0)
    was_comment = !in_head
    print
    next
}

# A declaration at the level of a namespace or of a class; what is indented further belongs to one.
/^(    )?[A-Za-z_~]/ && !/^ *(class|struct|enum|namespace|public|private|protected|friend|static_assert|return|extern template)/ {
    name = name_of($0)
    if (was_comment) owner = name
    else if (!after_template)
    {
        shared = shares($0, name) ? block : group
        if (shared == "" && /= default;/) shared = "Member by member."
        if (shared == "" && /= delete;/) shared = "There is none."
        gsub(/&/, "\\\\&", shared)
        if (shared != "") sub(/^ */, "&/** " shared " */ ")
    }
    after_template = /^ *(\/\*\*.*\*\/ )?template/
    was_comment = 0
    print
    next
}
/^ *$/ || /^(class|struct|#)/ { if (!in_head) block = "" }
{ was_comment = 0; print }
