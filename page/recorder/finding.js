/// Of the recorder's own API: which streams a camera has, what they send, and which cameras are in the network. These
/// addresses and members stand here and nowhere else. What a camera fails of is a Trouble with a cause.

import { Trouble, ask } from "./request.js";
import { inTurn } from "./turns.js";

/**
 * @typedef {import("./api.js").StreamName} StreamName
 * @typedef {{user: string, password: string}} Login
 *
 * @typedef {{value: string, from: string}} FoundFact "" for what is not known
 * @typedef {{port: number, speaks: string[]}} FoundPort
 *
 * How a record asks for a stream.
 * @typedef {object} StoreAs
 * @property {string} vendor
 * @property {string} model
 * @property {number} port
 * @property {string} channel
 * @property {string} sourcePath
 *
 * @typedef {object} FoundStream
 * @property {"RTSP" | "HTTP"} protocol
 * @property {number} port
 * @property {boolean} tls
 * @property {string} path
 * @property {string} channel
 * @property {StreamName | ""} name
 * @property {string} codec "" if it is not known
 * @property {number} width as the camera claims, as height and frameRate: 0 if it does not say
 * @property {number} height
 * @property {number} frameRate
 * @property {string} from who says so
 * @property {boolean} asked the camera said that it has just this one
 * @property {StoreAs} storeAs
 *
 * @typedef {object} FindStep
 * @property {"ports" | "login" | "onvif" | "paths"} step what has ended
 * @property {FoundPort[]} ports
 * @property {string} login
 * @property {FoundFact} maker
 * @property {number} streams how many are known by then
 *
 * @typedef {object} Found
 * @property {string} host
 * @property {string} cause "ok" where there is a stream
 * @property {string} login
 * @property {FoundFact} maker
 * @property {FoundFact} model
 * @property {FoundFact} firmware
 * @property {FoundFact} serial
 * @property {FoundStream[]} streams by channel
 * @property {number | null} clockOffset seconds by which the camera's clock is fast
 * @property {string[]} warnings
 *
 * @typedef {object} Measured what came, null for what is not known
 * @property {string} codec
 * @property {number | null} width
 * @property {number | null} height
 * @property {number | null} frameRate pictures a second
 * @property {number | null} bitRate kbit/s
 * @property {number | null} keyFrameDistance seconds
 * @property {number | null} keyFrameMoreThan seconds in which none came
 * @property {string} audio its codec, "" for none
 * @property {{name: string}[]} warnings
 *
 * @typedef {object} Device
 * @property {number} device its number: a later one with the same number takes its place
 * @property {string[]} addresses
 * @property {number | null} port
 * @property {string} name
 * @property {string} maker
 * @property {string} model
 * @property {string[]} by
 * @property {"new" | "known" | "moved"} state
 * @property {{camId: number, host: string, name: string}[]} cameras the stored ones that it is
 *
 * @typedef {{network: string, interface: string}} Network
 */

const ADDRESS = "recorder/1/";
/** The recorder asks these where no port is given: recorder/device/find/port_questions.cpp has them, too. */
const USUAL_PORTS = [80, 88, 443, 554, 1554, 2020, 7070, 8000, 8080, 8554, 8800, 8899];

/** Whether a port need not be given, since it is asked anyway. @param {number} port */
export const isUsualPort = (port) => USUAL_PORTS.includes(port);

/**
 * Asks, and gives the last line. What came to nothing, and says no more than that, is a Trouble.
 * @param {string} path
 * @param {Record<string, unknown>} parameters
 * @param {(line: any) => void} onLine
 * @param {AbortSignal} signal
 */
async function askInLines(path, parameters, onLine, signal) {
  const answer = await ask({ verb: "POST", address: ADDRESS + path, parameters, onLine }, signal);
  if (!answer.body.success && !answer.body.data) throw new Trouble("refused", answer.body.error?.message ?? "", answer);
  return answer.body.data;
}

/**
 * Which streams a camera has. A wrong password is one refused login.
 * @param {{host: string, ports: number[]} & Login} place no ports: the usual ones
 * @param {(step: FindStep) => void} onStep is told what has ended
 * @param {AbortSignal} signal
 * @returns {Promise<Found>} of a failure, too: its cause tells
 */
export const findStreams = ({ host, ports, user, password }, onStep, signal) =>
  inTurn([host], () => askInLines("find", { host, ports, user, password }, onStep, signal));

/**
 * What a stream sends, whatever the camera claims. Plays it for some seconds.
 * @param {string} host
 * @param {FoundStream} stream of RTSP
 * @param {Login} login
 * @param {AbortSignal} signal
 * @returns {Promise<Measured>}
 */
export function measureStream(host, { port, tls, path }, { user, password }, signal) {
  const parameters = { host, port, tls, path, user, password };
  return inTurn([host], async () => {
    const { body } = await ask({ verb: "POST", address: `${ADDRESS}measure`, parameters }, signal);
    return body.data;
  });
}

/**
 * Which cameras answer in the networks of the recorder. Logs in nowhere.
 * @param {string} range addresses that are tried as well, "192.168.1.0/24"; "" for none
 * @param {(device: Device) => void} onDevice is told of each as it answers
 * @param {AbortSignal} signal
 * @returns {Promise<Network[]>} what was searched
 */
export const discover = async (range, onDevice, signal) =>
  (await askInLines("discover", { range }, onDevice, signal)).networks;
