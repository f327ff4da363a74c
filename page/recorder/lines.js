/// Answers that come in lines of JSON, while the recorder still works (application/x-ndjson).

export const LINES_TYPE = "application/x-ndjson";

/**
 * Reads such an answer to its end.
 * @param {Response} response
 * @param {(line: any) => void} onLine is told each line as it comes, but the last
 * @returns {Promise<any>} the last line, which has "success"; null if the answer was cut off
 */
export async function readLines(response, onLine) {
  let last = null;
  for await (const text of linesOf(response)) {
    const line = JSON.parse(text);
    if ("success" in line) last = line;
    else onLine(line);
  }
  return last;
}

/** @param {Response} response */
async function* linesOf(response) {
  const reader = response.body?.pipeThrough(new TextDecoderStream()).getReader();
  let rest = "";
  for (let piece = await reader?.read(); piece && !piece.done; piece = await reader?.read()) {
    const lines = (rest + piece.value).split("\n");
    rest = lines.pop() ?? "";
    yield* lines;
  }
  if (rest) yield rest;
}
