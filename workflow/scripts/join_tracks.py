#!/usr/bin/env python3
"""join_tracks.py OUT IN... -- joins the bedGraph tracks of chunks that tile one profile, in order:
lines are copied as they are, and where a chunk's first line continues the last one (it starts
where that one ends, with the same value) the two become one line, as a whole run writes it."""
import sys


def main(target, sources):
    last = None  # [chrom, start, end, value] of the line not yet written
    with open(target, "w") as out:
        for path in sources:
            with open(path) as f:
                for line in f:
                    if not line.strip() or line.startswith(("track", "browser", "#")):
                        continue
                    chrom, start, end, value = line.rstrip("\n").split("\t")
                    if last and last[0] == chrom and last[2] == start and last[3] == value:
                        last[2] = end
                        continue
                    if last and (last[0] != chrom or int(start) < int(last[2])):
                        sys.exit("join_tracks: %s does not continue the chunk before it (%s:%s after %s:%s)"
                                 % (path, chrom, start, last[0], last[2]))
                    if last:
                        out.write("\t".join(last) + "\n")
                    last = [chrom, start, end, value]
        if last:
            out.write("\t".join(last) + "\n")


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit("usage: join_tracks.py OUT IN...")
    main(sys.argv[1], sys.argv[2:])
