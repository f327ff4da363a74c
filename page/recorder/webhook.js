/// Of the recorder's own API: where changes of cameras are told to. Its addresses and members stand here and nowhere else.
/// The secret goes to the recorder and never comes back.

import { ask } from "./request.js";

/**
 * @typedef {object} Webhook
 * @property {string} url
 * @property {number | null} triedAt when something was told last, in seconds since 1970
 * @property {string | null} result "ok", or the recorder's name for the failure
 */

const ADDRESS = "recorder/1/webhook";

/** @returns {Promise<Webhook | null>} null where nobody is told */
export const readWebhook = async () => (await ask({ verb: "GET", address: ADDRESS })).body.data;

/** @param {string} url @param {string} secret "": the stored one stays @returns {Promise<Webhook>} */
export const setWebhook = async (url, secret) =>
  (await ask({ verb: "PUT", address: ADDRESS, parameters: secret ? { url, secret } : { url } })).body.data;

export const removeWebhook = () => ask({ verb: "DELETE", address: ADDRESS });

/** Sends a notice. One that is not taken is a Trouble with a cause, and the answer's status in its details. */
export const testWebhook = () => ask({ verb: "POST", address: `${ADDRESS}/test`, parameters: {} });
