/// Where changes of cameras are told to.

export const notices = {
  title: "Notices",
  explained:
    "Each change of a stored camera can be sent to an address of yours (a webhook): a program there, or a service that " +
    "takes such messages, then tells you. A camera that changes again and again is told of once. For whoever writes that " +
    "program: it gets JSON by POST, and “X-Signature” has the HMAC-SHA256 of it with the secret, a password of your choice.",
  form: "Where changes are told to",
  url: "Address (http or https)",
  secret: "Secret (16 to 256 characters)",
  secretHint:
    "A new address needs one. It is not shown again. The stored one stays while this is empty and the address the same.",
  sendTest: "Send a test",
  sending: "Sending a test",
  remove: "Tell nobody",
  removeQuestion: "Nothing is sent any more, and the secret is forgotten. Go on?",
  removed: "Nobody is told any more",
  typeUrl: "Type the address that changes are sent to.",
  /** By the recorder's names for fields. @type {Readonly<Record<string, string>>} */
  mistakes: {
    url: "The address must begin with http:// or https://, and have no user and password in it.",
    secret: "The secret must have 16 to 256 characters.",
  },
  saveFirst: "Save the address first: the test goes to the stored one.",

  nobody: "Nobody is told so far.",
  notTried: "Nothing was sent to it so far.",
  /** What came of the last try. @param {string} time @param {string} result */
  last: (time, result) => `Last notice, ${time}: ${result}`,
  /** @param {string} result */
  tested: (result) => `The test: ${result}`,
  taken: "It was taken.",
  /** By the recorder's names for them. @type {Readonly<Record<string, string>>} */
  failures: {
    unreachable: "Not reachable. Compare the address's name and port, and look whether somebody listens there.",
    blocked: "The recorder may not connect to this address: its address policy decides.",
    timedOut: "No answer came in time.",
    notThisProtocol: "No secure connection came about, or what answered does not speak HTTP. Look at its certificate.",
    notUnderstood: "It hung up, or did not take the notice.",
  },
  failed: "It was not taken.",
  /** @param {string} failure @param {number} status */
  withStatus: (failure, status) => `${failure} Its status: ${status}.`,
};
