# Writes the rows of bag-customers.tsv as CSV, a product with BAG in its name a row. Needs GNU awk.
BEGIN {
    FS = "\t"
    OFS = ","
    print "customer", "date", "product"
}

NR > 1 {
    for (i = 3; i <= NF; ++i) {
        if ($i !~ /BAG/ || seen[$1, $2, $i]++)
            continue
        name = $i
        if (name ~ /[",]/) {
            gsub(/"/, "\"\"", name)
            name = "\"" name "\""
        }
        print $1, strftime("%Y-%m-%dT%H:%M:%S", $2, 1), name
    }
}
