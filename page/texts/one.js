/// The view of one camera, whose data somebody knows: its fields, its test, and what came of it.

export const one = {
  title: "Test one camera",

  // ---- the fields ----
  addressHint: "Name, IP address, or a whole rtsp:// address",
  whichHint: "Mostly the same view in several sizes: Main is the best one.",
  pathHint: "Only for models that ask for it, for example /stream1",
  loginOfPath: "The login in the path went into user and password",

  // ---- the fold of the stream ----
  defaultChannel: "default channel",
  /** @param {string} channel */
  channel: (channel) => `channel ${channel}`,
  /** @param {string} parts such as "channel 2, H.264" */
  streamSummary: (parts) => `Stream: ${parts}`,

  // ---- what is wrong with a field ----
  noAddress: "Type the camera's address.",
  modelsLoading: "The list of models is not here yet.",
  modelsFailed: "The list of models could not be read: see above.",
  standsForStored: "This text stands for a stored password; type the camera's own.",
  noPath: "This model needs the path of the stream.",

  // ---- the test ----
  testing: "Testing",
  contacts: "The recorder contacts the camera.",
  /** @param {number} seconds */
  clock: (seconds) => `${seconds} s`,
  /** @param {number} seconds */
  longClock: (seconds) => `${seconds} s. Still waiting, silent cameras take longest`,

  // ---- what came of it ----
  whatTestDoes: "What a test does",
  testExplained:
    "The recorder contacts the camera once, with the login that you give, and looks for video. After a success it " +
    "also fetches a picture. A test saves nothing.",
  works: "Camera works",
  foundVideo: "The recorder logged in and found video.",
  /** @param {string} stream "sub" or "third" */
  foundVideoIn: (stream) => `The recorder logged in and found video in the ${stream} stream.`,
  passed: "Passed: camera works",
  noResult: "No result",
  noAnswer: "No answer",
  notTested: "Not tested",

  // ---- what is found out besides ----
  /** @param {string} host */
  pictureOf: (host) => `Picture of camera ${host}`,
  passedWithoutPicture: "Test passed. No picture came.",
  /** @param {string} model */
  modelCapabilities: (model) => `Capabilities of ${model}, from the model list`,
  cameraSaysItself: "The camera says itself what it can do, once a test has passed.",
  /** @param {string} place host and port */
  cameraCapabilities: (place) => `Capabilities, from the camera at ${place}`,
  noLiveCapabilities: "Live capabilities not available",
  /** @param {number} code */
  valuesOfModelList: (code) => `The table has the values of the model list. (code ${code})`,
  notMeasured: "Size not measured",
  /** @param {string} size such as "640 × 480" */
  sizeOfStream: (size) => `Size of the stream: ${size}`,

  // ---- marks of what was found out about other values ----
  earlierResult: "Result of the earlier values",
  pictureOfEarlierCamera: "Picture of the earlier camera",
  pictureOfEarlierValues: "Picture of the earlier values",
  ofEarlierCamera: "Of the earlier camera",
  ofEarlierValues: "Of the earlier values",
};
