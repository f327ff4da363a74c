/**
 * A count and its noun.
 * @param {number} count
 * @param {string} one
 * @param {string} [many]
 */
export function counted(count, one, many = `${one}s`) {
  return `${count.toLocaleString("en")} ${count === 1 ? one : many}`;
}
