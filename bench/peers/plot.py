"""Bars of ratios as SVG, as documents show them."""

from html import escape
from pathlib import Path

LABEL, FULL, LINE, TOP = 110, 420, 26, 48  # pixels: names, the bar of a ratio of 1, a row, the title


def plot_bars(path, title, ratios):
    """Writes horizontal bars of `ratios` by name, with a line at 1."""
    height = TOP + LINE * len(ratios) + 16
    width = LABEL + FULL + 80
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
             'font-family="sans-serif" font-size="13">',
             f'<rect width="{width}" height="{height}" fill="#fff"/>',
             f'<text x="12" y="24" fill="#222">{escape(title)}</text>']
    for i, (name, ratio) in enumerate(ratios.items()):
        y = TOP + LINE * i
        length = FULL * min(ratio, 1.1)
        parts += [f'<text x="{LABEL - 8}" y="{y + 13}" text-anchor="end" fill="#222">{escape(name)}</text>',
                  f'<rect x="{LABEL}" y="{y}" width="{length:.0f}" height="18" fill="#3b6ea5"/>',
                  f'<text x="{LABEL + length + 6:.0f}" y="{y + 13}" fill="#222">{ratio:.2f}</text>']
    parts += [f'<line x1="{LABEL + FULL}" x2="{LABEL + FULL}" y1="{TOP - 8}" y2="{height - 12}" '
              'stroke="#888" stroke-dasharray="4 3"/>', "</svg>", ""]
    Path(path).write_text("\n".join(parts), encoding="utf-8")
