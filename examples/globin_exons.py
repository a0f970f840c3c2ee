#!/usr/bin/env python3
"""globin_exons.py -- writes HUMHBB.gff3: the coding exons of the five beta-like globin genes of
HUMHBB.fa (GenBank U01317), and cuts HBB-region.fa and HBG2-region.fa from it.

Each exon is where the record, translated, holds the exact peptide of its protein (UniProt P02100
HBE1, P69892 HBG2, P69891 HBG1, P02042 HBD, P68871 HBB): exon 1 from the start codon through two
bases of codon 30, exon 2 from the third base of codon 30 through codon 104, exon 3 from codon 105
through the stop codon, as in every gene of the beta-globin family. The script checks that each
exon is flanked by GT...AG and that the third ends on a stop codon. The transcripts' ends are not
known here, so the file holds no UTR.

Run from the folder of HUMHBB.fa: python3 globin_exons.py
"""
import re

CODONS = "FFLLSSSSYY**CC*WLLLLPPPPHHQQRRRRIIIMTTTTNNKKSSRRVVVVAAAADDEEGGGG"
BASES = "TCAG"
CODE = {a + b + c: CODONS[16 * i + 4 * j + k] for i, a in enumerate(BASES) for j, b in enumerate(BASES)
        for k, c in enumerate(BASES)}
GAMMA = ("MGHFTEEDKATITSLWGKVNVEDAGGETLGRLLVVYPWTQRFFDSFGNLSSASAIMGNPKVKAHGKKVLTSLGDAIKHLDDLKGTFAQLSEL"
         "HCDKLHVDPENFKLLGNVLVTVLAIHFGKEFTPEVQASWQKMVTGVASALSSRYH")
PROTEINS = {  # in the order of the locus, 5' to 3'
    "HBE1": "MVHFTAEEKAAVTSLWSKMNVEEAGGEALGRLLVVYPWTQRFFDSFGNLSSPSAILGNPKVKAHGKKVLTSFGDAIKNMDNLKPAFAKLSEL"
            "HCDKLHVDPENFKLLGNVMVIILATHFGKEFTPEVQAAWQKLVSAVAIALAHKYH",
    "HBG2": GAMMA,                               # G-gamma: glycine at 136
    "HBG1": GAMMA[:136] + "A" + GAMMA[137:],     # A-gamma: alanine at 136
    "HBD": "MVHLTPEEKTAVNALWGKVNVDAVGGEALGRLLVVYPWTQRFFESFGDLSSPDAVMGNPKVKAHGKKVLGAFSDGLAHLDNLKGTFSQLSEL"
           "HCDKLHVDPENFRLLGNVLVCVLARNFGKEFTPQMQAAYQKVVAGVANALAHKYH",
    "HBB": "MVHLTPEEKSAVTALWGKVNVDEVGGEALGRLLVVYPWTQRFFESFGDLSTPDAVMGNPKVKAHGKKVLGAFSDGLAHLDNLKGTFATLSEL"
           "HCDKLHVDPENFRLLGNVLVCVLAHHFGKEFTPPVQAAYQKVVAGVANALAHKYH",
}
REGIONS = {"HBB": "beta-globin", "HBG2": "G-gamma-globin"}


def main():
    lines = open("HUMHBB.fa").read().splitlines()
    seq = "".join(l.strip() for l in lines if not l.startswith(">")).upper()
    frames = ["".join(CODE.get(seq[i:i + 3], "X") for i in range(f, len(seq) - 2, 3)) for f in range(3)]

    def at(peptide):  # 1-based positions of the first base of each exact in-frame match
        return sorted(f + 3 * m.start() + 1 for f, t in enumerate(frames) for m in re.finditer(peptide, t))

    out = ["##gff-version 3", "##sequence-region HUMHBB 1 %d" % len(seq),
           "# Coding exons of the beta-like globin genes of GenBank U01317, made by globin_exons.py"]
    genes = {}
    for name, p in PROTEINS.items():
        found = [(s, q, r) for s in at(p[0:30]) for q in at(p[31:105]) for r in at(p[105:147] + r"\*")
                 if 0 < q - s < 2000 and 0 < r - q < 2000]
        assert len(found) == 1, (name, found)
        s, q, r = found[0]
        exons = [(s, s + 91, 0), (q - 1, q + 74 * 3 - 1, 1), (r, r + 42 * 3 + 2, 0)]
        for (a, b, _), (c, _, _) in zip(exons, exons[1:]):
            assert seq[b:b + 2] == "GT" and seq[c - 3:c - 1] == "AG", name
        assert seq[exons[2][1] - 3:exons[2][1]] in ("TAA", "TAG", "TGA"), name
        genes[name] = (exons[0][0], exons[2][1])
        out.append("HUMHBB\tglobin_exons\tgene\t%d\t%d\t.\t+\t.\tID=%s;Name=%s" % (s, exons[2][1], name, name))
        out.append("HUMHBB\tglobin_exons\tmRNA\t%d\t%d\t.\t+\t.\tID=%s.1;Parent=%s" % (s, exons[2][1], name, name))
        for a, b, phase in exons:
            out.append("HUMHBB\tglobin_exons\tCDS\t%d\t%d\t.\t+\t%d\tParent=%s.1" % (a, b, phase, name))
    open("HUMHBB.gff3", "w").write("\n".join(out) + "\n")

    for name, what in REGIONS.items():
        start, end = genes[name][0] - 500, genes[name][1] + 500
        part = seq[start - 1:end]
        body = "\n".join(part[i:i + 60] for i in range(0, len(part), 60))
        open("%s-region.fa" % name, "w").write(
            ">%s-region HUMHBB:%d-%d %s (%s) gene region, cut from GenBank U01317\n%s\n" % (name, start, end, what, name, body))


if __name__ == "__main__":
    main()
