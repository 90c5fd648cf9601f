'use strict';
// Keeps the page live: the server sends each part of it anew when it has changed, and this script
// puts in what differs. Rates come as numbers and are plotted here.
(function () {
    const parts = ['state', 'drawing', 'ports', 'counters', 'phys', 'registers', 'changes', 'log'];
    const kSpan = 300000;
    const kShortestSpan = 60000;
    const kGap = 15000;
    const kSvg = 'http://www.w3.org/2000/svg';
    const kWidth = 280;
    const kHeight = 72;

    // Changes only what differs, so that scrolling, selection and focus stay.
    function morph(from, to) {
        if (from.nodeType !== to.nodeType || from.nodeName !== to.nodeName) {
            from.replaceWith(to.cloneNode(true));
            return;
        }
        if (from.nodeType !== Node.ELEMENT_NODE) {
            if (from.data !== to.data)
                from.data = to.data;
            return;
        }
        morphAttributes(from, to);
        morphChildren(from, to);
    }

    function morphAttributes(from, to) {
        // What the reader has opened or closed stays so.
        const kept = from.nodeName === 'DETAILS';
        for (const old of Array.from(from.attributes))
            if (!kept && !to.hasAttribute(old.name))
                from.removeAttribute(old.name);
        for (const wanted of Array.from(to.attributes))
            if (!kept && from.getAttribute(wanted.name) !== wanted.value)
                from.setAttribute(wanted.name, wanted.value);
    }

    function morphChildren(from, to) {
        const old = Array.from(from.childNodes);
        const wanted = Array.from(to.childNodes);
        wanted.forEach((node, i) => {
            if (i < old.length)
                morph(old[i], node);
            else
                from.appendChild(node.cloneNode(true));
        });
        old.slice(wanted.length).forEach((node) => node.remove());
    }

    function show(id, html) {
        const place = document.getElementById(id);
        const template = document.createElement('template');
        template.innerHTML = html;
        const wanted = document.createElement('div');
        wanted.appendChild(document.importNode(template.content, true));
        morphChildren(place, wanted);
    }

    // A list of changes grows at its head: moving what is there would have all of it read aloud.
    function showChanges(html) {
        const place = document.getElementById('changes');
        const template = document.createElement('template');
        template.innerHTML = html;
        const list = place.querySelector('ol');
        const wanted = template.content.querySelector('ol');
        if (!list || !wanted) {
            show('changes', html);
            return;
        }
        const fresh = Array.from(wanted.children);
        const first = list.firstElementChild.textContent;
        const known = fresh.findIndex((line) => line.textContent === first);
        const more = known < 0 ? fresh : fresh.slice(0, known);
        if (known < 0)
            list.replaceChildren();
        for (const line of more.reverse())
            list.prepend(document.importNode(line, true));
        while (list.children.length > fresh.length)
            list.lastElementChild.remove();
    }

    // The MAC table, with what is being searched for.
    const search = document.getElementById('mac-search');
    let asked = 0;
    async function searchMac() {
        const mine = ++asked;
        try {
            const answer = await fetch('/part/mac?mac=' + encodeURIComponent(search.value));
            const html = await answer.text();
            if (answer.ok && mine === asked)
                show('mac', html);
        } catch (error) {
            // The state line says that the connection is lost.
        }
    }
    function showMac(html) {
        if (search.value !== '') {
            searchMac();
            return;
        }
        ++asked;
        show('mac', html);
    }
    let typed = 0;
    search.addEventListener('input', () => {
        clearTimeout(typed);
        typed = setTimeout(searchMac, 150);
    });
    document.getElementById('search').addEventListener('submit', (event) => {
        event.preventDefault();
        searchMac();
    });

    // Plots: points of [time, octets received, octets sent] for each port.
    const points = new Map();
    const plots = new Map();

    function element(name, attributes, parent) {
        const made = document.createElementNS(kSvg, name);
        for (const key of Object.keys(attributes))
            made.setAttribute(key, attributes[key]);
        parent.appendChild(made);
        return made;
    }

    function rate(octets) {
        const units = ['b/s', 'kb/s', 'Mb/s', 'Gb/s'];
        let value = octets * 8;
        let unit = 0;
        while (value >= 1000 && unit + 1 < units.length) {
            value /= 1000;
            ++unit;
        }
        return value.toFixed(unit === 0 || value >= 100 ? 0 : 1) + ' ' + units[unit];
    }

    function makePlot(port) {
        const figure = document.createElement('figure');
        const caption = document.createElement('figcaption');
        figure.appendChild(caption);
        const svg = element('svg', {viewBox: `0 0 ${kWidth} ${kHeight}`, role: 'img',
                                    preserveAspectRatio: 'none'}, figure);
        const plot = {figure, caption, svg,
                      received: element('path', {class: 'received'}, svg),
                      sent: element('path', {class: 'sent'}, svg)};
        const later = Array.from(plots.keys()).filter((other) => other > port).sort()[0];
        document.getElementById('plots').insertBefore(figure, later ? plots.get(later).figure : null);
        plots.set(port, plot);
        return plot;
    }

    // A gap where nothing is known, or where nothing came for a while.
    function path(list, column, most) {
        let text = '';
        let last = -Infinity;
        const now = list[list.length - 1][0];
        const span = Math.max(kShortestSpan, now - list[0][0]);
        for (const point of list) {
            if (point[column] === null)
                continue;
            const x = kWidth - (now - point[0]) / span * kWidth;
            const y = kHeight - 2 - point[column] / most * (kHeight - 6);
            const gap = point[0] - last > kGap;
            // A point that stands alone is a dot.
            text += (gap ? 'M' : 'L') + x.toFixed(1) + ' ' + y.toFixed(1) + (gap ? 'h0.1' : '');
            last = point[0];
        }
        return text;
    }

    function drawPlot(port) {
        const list = points.get(port);
        const newest = list[list.length - 1];
        const most = Math.max(125, ...list.map((point) => Math.max(point[1] || 0, point[2] || 0)));
        const known = plots.get(port);
        if (!known && most <= 125)
            return;
        const plot = known || makePlot(port);
        plot.caption.textContent = `${port}  ↓ ${rate(newest[1] || 0)}  ↑ ${rate(newest[2] || 0)}` +
            `  peak ${rate(most)}`;
        plot.svg.setAttribute('aria-label', 'traffic of port ' + plot.caption.textContent);
        plot.received.setAttribute('d', path(list, 1, most));
        plot.sent.setAttribute('d', path(list, 2, most));
        document.getElementById('traffic').hidden = false;
    }

    function takePoints(data, anew) {
        if (anew)
            points.clear();
        for (const port of Object.keys(data)) {
            const list = points.get(port) || [];
            for (const point of data[port])
                if (list.length === 0 || point[0] > list[list.length - 1][0])
                    list.push(point);
            if (list.length === 0)
                continue;
            const newest = list[list.length - 1][0];
            while (list[0][0] < newest - kSpan)
                list.shift();
            points.set(port, list);
            drawPlot(port);
        }
    }

    const source = new EventSource('/events');
    for (const part of parts)
        if (part !== 'changes')
            source.addEventListener(part, (event) => show(part, event.data));
    source.addEventListener('changes', (event) => showChanges(event.data));
    source.addEventListener('mac', (event) => showMac(event.data));
    source.addEventListener('history', (event) => takePoints(JSON.parse(event.data), true));
    source.addEventListener('rates', (event) => takePoints(JSON.parse(event.data), false));
    source.addEventListener('error', () => {
        show('state', '<p class="state bad">The connection to orblink-web is lost; ' +
                      'what is shown may be old.</p>');
    });
}());
