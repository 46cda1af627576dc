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
                          `pictures: ${pictures.length}`].join('\n');
    document.body.append(report);
})();
