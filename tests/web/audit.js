/// A look over a state of the page: what axe finds, what screen readers would read out for nothing, and pictures.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { DESKTOP, here } from "./stage.js";

const AXE = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

/** In what is read out: a sign that stands before the words for it, or an empty paragraph or list. */
const NOISE = /.*(: "?|heading "|listitem: )[!✓✕–‖=] .*|.*- (paragraph|list( ".*")?)$/gm;

/** No serious finding in light and in dark; a picture of each, and one of the phone, if it has a name. */
export async function audit(page, state, picture = "") {
  await page.evaluate(AXE);
  for (const colorScheme of ["light", "dark"]) {
    await page.emulateMedia({ colorScheme });
    const rules = colorScheme === "dark" ? { runOnly: ["color-contrast"] } : {}; // nothing else differs
    const { violations } = await page.evaluate((rules) => globalThis.axe.run(rules), rules);
    const serious = violations.filter(({ impact }) => impact === "serious" || impact === "critical");
    const found = serious.map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html).join(" ")}`);
    assert.deepEqual(found, [], `${state}, ${colorScheme}`);
    if (picture) await page.screenshot({ path: here(`out/page/${picture}-${colorScheme}.png`), fullPage: true });
  }
  assert.deepEqual((await page.locator("body").ariaSnapshot()).match(NOISE) ?? [], [], `${state}, read out`);
  if (!picture) return;
  await page.emulateMedia({ colorScheme: "light" });
  await page.setViewportSize({ width: 390, height: 844 });
  await page.screenshot({ path: here(`out/page/${picture}-phone.png`), fullPage: true });
  const tooWide = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
  await page.setViewportSize(DESKTOP);
  assert.ok(tooWide <= 0, `${picture} is ${tooWide} px wider than a phone`);
}
