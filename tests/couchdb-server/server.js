// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// A CouchDB-compatible (PouchDB) server in memory, on a loopback port.
// Prints one line of JSON with its URL once it listens; ends with SIGTERM or when its standard input
// closes, so that it never outlives the test that started it.

'use strict';

const crypto = require('crypto');
const { parseArgs } = require('util');
const express = require('express');
const expressPouchDB = require('express-pouchdb');
const PouchDB = require('pouchdb-core')
    .plugin(require('pouchdb-adapter-memory'))
    .plugin(require('pouchdb-mapreduce'));

const { values: options } = parseArgs({
    options: {
        // How a view is answered: "strong" with a quoted ETag as CouchDB 1.x, "none" without one as
        // CouchDB 2 and 3.
        views: { type: 'string', default: 'strong' },
        // "user:password": everything else gets 401.
        auth: { type: 'string' },
        // 0 lets the kernel choose.
        port: { type: 'string', default: '0' },
    },
});

if (!['strong', 'none'].includes(options.views)) {
    process.stderr.write(`server.js: --views takes strong or none, not "${options.views}"\n`);
    process.exit(2);
}

// Capital base 36 of an MD5, the form of CouchDB 1.x: at most 25 characters, safe as a file name.
function strongETag(body) {
    const digest = crypto.createHash('md5').update(body).digest('hex');
    return `"${BigInt(`0x${digest}`).toString(36).toUpperCase()}"`;
}

// Views chunked, never compressed, with the chosen kind of ETag.
function answerViewsAsCouchDB(request, response, next) {
    if (!/\/_design\/[^/]+\/_view\//.test(request.path))
        return next();
    response.send = body => {
        const bytes = Buffer.from(body);
        response.setHeader('Content-Type', 'application/json');
        if (options.views === 'strong' && response.statusCode === 200) {
            response.setHeader('ETag', strongETag(bytes));
            if (request.fresh)
                return response.status(304).end();
        }
        response.write(bytes);
        return response.end();
    };
    return next();
}

function requireAuthorization(request, response, next) {
    const expected = `Basic ${Buffer.from(options.auth).toString('base64')}`;
    if (request.headers.authorization === expected)
        return next();
    response.setHeader('WWW-Authenticate', 'Basic realm="server"');
    return response.status(401).json({ error: 'unauthorized', reason: 'You are not authorized.' });
}

const pouchApp = expressPouchDB(PouchDB.defaults({ adapter: 'memory' }), {
    mode: 'minimumForPouchDB',
    overrideMode: { exclude: ['compression'] },
});

const app = express();
if (options.auth)
    app.use(requireAuthorization);
app.use(answerViewsAsCouchDB);
app.use(pouchApp);

const server = app.listen(Number(options.port), '127.0.0.1', () => {
    const url = `http://127.0.0.1:${server.address().port}/`;
    process.stdout.write(`${JSON.stringify({ url })}\n`);
});
server.keepAliveTimeout = 120000;

const end = () => process.exit(0);
process.on('SIGTERM', end);
process.stdin.on('end', end);
process.stdin.on('error', end);
process.stdin.resume();
