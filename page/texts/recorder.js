/// What went wrong between the page and the recorder.

export const recorder = {
  stoppedWaiting: "Stopped waiting. The recorder finishes on its own.",
  noAnswer: "The recorder did not answer in time.",
  notReachable: "The recorder is not reachable.",
  nobodyLoggedIn: "Nobody is logged in.",
  /** @param {string} name */
  otherName: (name) =>
    `This recorder does not go by the name “${name}”. Add "${name}" to "hostNames" in its configuration, or open ` +
    "this page by the recorder's IP address.",
  busy: "The recorder is busy. Try again in a moment.",
  cutOff: "The recorder's answer was cut off. Try again.",
  /** @param {number} status */
  status: (status) => `It answered with status ${status}.`,
  /** @param {number} code */
  wholeGroup: (code) => `It gave code ${code} for the whole group.`,
  streamUnknown: "The recorder no longer knows this stream of the model.",
};
