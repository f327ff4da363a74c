/// The page below a prefix: behind a proxy that takes it off, and knows nothing beside it.

import assert from "node:assert/strict";
import { createServer, request } from "node:http";
import { test } from "node:test";
import { USER, control, enterLogin, expectText, ports, serve, testOne, withPage } from "./stage.js";

const PREFIX = "/house/cameras/";

/** @param {string} address the recorder's */
async function proxyTo(address) {
  const { hostname, port } = new URL(address);
  const beside = [];
  const server = createServer((from, to) => {
    if (!from.url.startsWith(PREFIX)) {
      beside.push(from.url);
      return to.writeHead(404).end();
    }
    const question = { hostname, port, method: from.method, headers: from.headers };
    const path = from.url.slice(PREFIX.length - 1);
    const asked = request({ ...question, path }, (answer) => answer.pipe(to.writeHead(answer.statusCode, answer.headers)));
    asked.on("error", () => to.destroy());
    return from.pipe(asked);
  });
  await new Promise((done) => server.listen(0, "127.0.0.1", done));
  return { at: `http://127.0.0.1:${server.address().port}${PREFIX}`, beside, server };
}

test("the page works below a prefix that a proxy takes off", async () => {
  const add = () => control(`${USER.password}\n`, `user add ${USER.username}`, "behind.json");
  const { at, beside, server } = await proxyTo(await serve("behind", add));
  const isIn = (page) => page.locator("#who-name:visible", { hasText: USER.username }).waitFor();
  const work = async (page) => {
    await enterLogin(page, USER);
    await isIn(page);
    await testOne(page, { port: ports.works });
    await expectText(page, "one-picture-text", /640 × 480/);
    await page.reload();
    await isIn(page);
    assert.equal(page.url(), `${at}#one`);
  };
  const byLink = async (page) => {
    await isIn(page);
    assert.equal(page.url(), at, "the code is taken from the address, and nothing else");
  };
  try {
    await withPage("#one", work, { at, user: null });
    await withPage(new URL(control("", "link", "behind.json").trim()).hash, byLink, { at, user: null });
    assert.deepEqual(beside, []);
  } finally {
    server.closeAllConnections();
    server.close();
  }
});
