/// Work with cameras that must not run side by side: weak cameras take one or two connections.

/** The last piece of work with each. @type {Map<string, Promise<unknown>>} */
const lastTurns = new Map();

/**
 * Does camera work after all earlier work with the same cameras.
 * @template T
 * @param {string[]} names hosts, or what else tells cameras apart
 * @param {() => Promise<T>} work
 * @returns {Promise<T>}
 */
export function inTurn(names, work) {
  const turn = Promise.all(names.map((name) => lastTurns.get(name))).then(work);
  const settled = turn.catch(() => {});
  for (const name of names) lastTurns.set(name, settled);
  settled.then(() => {
    for (const name of names) if (lastTurns.get(name) === settled) lastTurns.delete(name);
  });
  return turn;
}
