"""Draws a diagram of tables, as the pages hold it in Mermaid's language, with Graphviz:
the site fetches no script that could do it in the browser."""
import html
import re
import subprocess

HEADER = """digraph schema {
  rankdir=LR; ranksep=0.7; nodesep=0.25; bgcolor="#ffffff";
  node [shape=plaintext, fontname="sans-serif", fontsize=11, margin=0];
  edge [color="#5a6675", dir=both, arrowtail=teeodot, arrowhead=crowodot, arrowsize=0.7];
"""


def row(line):
    kind, name, rest = re.match(r"\s*(\w+) (\w+)(.*)", line).groups()
    notes = html.escape(" ".join(rest.replace('"', "").split()))
    return (f'<tr><td align="left" port="{name}">{name}</td><td align="left"><font color="#5a6675">{kind}</font></td>'
            f'<td align="left"><font color="#5a6675">{notes} </font></td></tr>')


def table(name, lines):
    return (f'  {name} [label=<<table border="0" cellborder="1" cellspacing="0" cellpadding="3" color="#b9c3cf">'
            f'<tr><td colspan="3" bgcolor="#cfe3f7"><b>{name}</b></td></tr>{"".join(map(row, lines))}</table>>];')


def graph_of(diagram):
    tables = [table(name, rows.strip("\n").split("\n"))
              for name, rows in re.findall(r"(?m)^ *(\w+) \{\n(.*?)^ *\}", diagram, re.S)]
    references = [f"  {owner} -> {owned}:{column}:w;"
                  for owner, owned, column in re.findall(r"(?m)^ *(\w+) \|o--o\{ (\w+) : (\w+)$", diagram)]
    return HEADER + "\n".join(tables + references) + "\n}\n"


def draw(diagram, path):
    path.write_bytes(subprocess.run(["dot", "-Tsvg"], input=graph_of(diagram).encode(), stdout=subprocess.PIPE,
                                    check=True).stdout)
