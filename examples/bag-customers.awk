# Cuts the sample: awk -f bag-customers.awk online_retail.tsv online_retail.tsv >bag-customers.tsv
#
# The file is read twice, to choose the customers and then to copy their rows: all registered
# customers who came at two times or more and of whose different products at least three in ten have
# BAG in their name.

BEGIN { FS = "\t" }

FNR == 1 {
    pass++
    if (pass == 2)
        print
    next
}

$1 ~ /^guest-/ { next }

pass == 1 {
    if (!(($1, $2) in known_visits)) {
        known_visits[$1, $2]
        visits[$1]++
    }
    for (i = 3; i <= NF; i++)
        if (!(($1, $i) in known_products)) {
            known_products[$1, $i]
            products[$1]++
            if ($i ~ /BAG/)
                bags[$1]++
        }
    next
}

visits[$1] >= 2 && 10 * bags[$1] >= 3 * products[$1]
