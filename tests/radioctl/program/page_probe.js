// Looks at the page that it was put into, and writes what is wrong with it, and how many pictures there are, to
// the page itself: from there it is read.
(() => {
    document.currentScript.remove();
    const complaints = [];
    const pictures = document.querySelectorAll('svg');
    const least = 100;
    const shapes = 'path, polygon, polyline, line, rect, circle, use';

    const isDrawn = (shape) => {
        const box = shape.getBBox();
        return box.width > 0 || box.height > 0;
    };
    for (const picture of pictures) {
        const box = picture.getBBox();
        const shown = picture.getBoundingClientRect();
        if (Math.min(box.width, box.height, shown.width, shown.height) <= least) {
            complaints.push(`picture ${picture.id} is too small`);
        }
        // Axes are no picture: gnuplot draws what is plotted into groups of their own.
        const plotted = [...picture.querySelectorAll(`g[id^='${picture.id}-gnuplot_plot_']`)];
        if (!plotted.some((plot) => [...plot.querySelectorAll(shapes)].some(isDrawn))) {
            complaints.push(`picture ${picture.id} is empty`);
        }
        // A mark refers to its shape, which must be one of this very picture.
        for (const mark of picture.querySelectorAll('use')) {
            const shape = document.getElementById(mark.href.baseVal.slice(1));
            if (shape === null || !picture.contains(shape)) {
                complaints.push(`picture ${picture.id} has a mark without a shape`);
                break;
            }
        }
    }
    // Everything that is written must stand out from what is behind it, in each colour scheme.
    const leastContrast = 4.5;
    const channels = (colour) => colour.match(/[0-9.]+/g).map(Number);
    const luminance = (colour) => {
        const [r, g, b] = channels(colour).map((value) => value / 255).map(
            (value) => value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4);
        return 0.2126 * r + 0.7152 * g + 0.0722 * b;
    };
    const contrast = (one, other) => {
        const [low, high] = [luminance(one), luminance(other)].sort((a, b) => a - b);
        return (high + 0.05) / (low + 0.05);
    };
    const behind = (element) => {
        for (let at = element; at !== null; at = at.parentElement) {
            const colour = getComputedStyle(at).backgroundColor;
            if (channels(colour)[3] !== 0) {
                return colour;
            }
        }
        return 'rgb(255, 255, 255)';
    };
    const faint = new Set();
    for (const element of document.querySelectorAll('h1, h2, p, li, th, td, figcaption, text')) {
        const style = getComputedStyle(element);
        const colour = element.tagName === 'text' ? style.fill : style.color;
        if (contrast(colour, behind(element)) < leastContrast) {
            faint.add(element.tagName.toLowerCase());
        }
    }
    faint.forEach((name) => complaints.push(`hard to read: ${name}`));
    // On paper none of these is to be torn apart, a caption least of all.
    const torn = new Set();
    for (const element of document.querySelectorAll('figure, tr, .verdict, .warning')) {
        if (getComputedStyle(element).breakInside !== 'avoid') {
            torn.add(element.tagName.toLowerCase());
        }
    }
    torn.forEach((name) => complaints.push(`may be torn apart: ${name}`));
    for (const figure of document.querySelectorAll('figure')) {
        if (figure.querySelector('figcaption') === null) {
            complaints.push('a figure without a caption');
        }
    }
    if (document.querySelector('h1').nextElementSibling?.className.startsWith('verdict ') !== true) {
        complaints.push('the verdict does not come first');
    }
    for (const entry of performance.getEntriesByType('resource')) {
        complaints.push(`asks for ${entry.name}`);
    }
    for (const element of document.querySelectorAll('*')) {
        for (const {name, value} of element.attributes) {
            const isAddress = /^(src|srcset|href|xlink:href|data|action|poster|background)$/.test(name);
            if ((isAddress && !value.startsWith('#')) || /url\((?!['"]?#)/.test(value)) {
                complaints.push(`refers to ${value}`);
            }
        }
    }
    const report = document.createElement('pre');
    report.textContent = [...complaints.map((complaint) => `complaint: ${complaint}`),
                          `pictures: ${pictures.length}`,
                          `scheme: ${matchMedia('(prefers-color-scheme: dark)').matches ? 'dark' : 'light'}`].join('\n');
    document.body.append(report);
})();
