# The pages link to headers and programs where they stand in the repository. On the site, a header's class and the program's
# source have pages of their own.

function page_of(file)
{
    sub(/^.*\//, "", file)
    gsub(/_/, "__", file)
    sub(/\./, "_8", file)
    return file "_source.html"
}

{
    line = ""
    rest = $0
    while (match(rest, /\]\(\.\.\/(lib|examples\/hosts)\/[^)]*\)/))
    {
        link = substr(rest, RSTART + 2, RLENGTH - 3)
        line = line substr(rest, 1, RSTART - 1)
        class = link
        sub(/^.*\//, "", class)
        sub(/\.h$/, "", class)
        if (link ~ /^\.\.\/lib\/ks_graph/) line = line "](@ref kestrel::graph::" class ")"
        else if (link ~ /^\.\.\/lib\/foundation/) line = line "](@ref kestrel::" class ")"
        else line = line "](" page_of(link) ")"
        rest = substr(rest, RSTART + RLENGTH)
    }
    print line rest
}
