/// What a person reads when something about a camera failed. docs/causes.md has the same texts in tables.

/**
 * @typedef {"address" | "port" | "model" | "password" | "path" | "codec" | "none"} Field
 * @typedef {object} Cause
 * @property {string} heading
 * @property {string} happened
 * @property {string} first what to try first
 * @property {Field} field the field to look at
 *
 * @typedef {Cause & {answered: boolean}} NamedCause `answered`: the camera has answered, whatever the code says
 */

/** `field` and `answered` are for the page itself: they are the same in each language. */
export const causes = {
  /** Codes of CameraTest and of a list's rows. @type {Readonly<Record<number, Cause>>} */
  test: {
    462: {
      heading: "Camera not found",
      happened:
        "The recorder could not reach this address: the name is unknown, no route leads there, or nothing accepts " +
        "connections on that port.",
      first: "Compare address and port with the camera's own network settings.",
      field: "address",
    },
    463: {
      heading: "Camera did not answer in time",
      happened: "No complete answer came from this address within the time limit.",
      first: "Check that the camera has power and that no firewall stands between it and the recorder.",
      field: "address",
    },
    464: {
      heading: "Camera refused the login",
      happened:
        "The camera answered, but rejected this user name and password. Or a stored password was not lent: it is " +
        "for its own camera, path and user alone.",
      first:
        "Type the password again, once: many cameras lock a user out after a few wrong tries. With a stored " +
        "password, type the password again to try another path or user.",
      field: "password",
    },
    465: {
      heading: "Stream not found on camera",
      happened: "The camera answered, but has no stream at this path or channel.",
      first: "Copy the stream path from the camera's web page or manual, and check the channel.",
      field: "path",
    },
    466: {
      heading: "No usable video",
      happened: "The stream has no video, or not in the codec or stream type that was asked for.",
      first: "Set the codec to Any, or to what the camera is set to send.",
      field: "codec",
    },
    467: {
      heading: "Camera is busy",
      happened: "The camera said that it has no room for another connection now.",
      first: "Close other viewers of this camera, wait a minute, test again.",
      field: "none",
    },
    468: {
      heading: "Test could not be completed",
      happened:
        "The test could not be prepared, this recorder is not allowed to contact the address, or the camera's " +
        "answer or login method is not supported. The recorder's log says which.",
      first: 'Check that port and chosen model match the camera; "Any camera" needs the stream path.',
      field: "model",
    },
  },

  /** Codes of CamCapRemote and CamCap. @type {Readonly<Record<number, Cause>>} */
  capability: {
    400: {
      heading: "No document for this model",
      happened: "The recorder has no usable capability document for it.",
      first: "Choose another model.",
      field: "model",
    },
    457: {
      heading: "Capabilities not understood",
      happened:
        "What the camera said of itself could not be used, or its clock, its login method or the recorder's address " +
        "policy stood in the way. The recorder's log says which.",
      first: "Set the camera's clock, restart it, and test again.",
      field: "none",
    },
    458: {
      heading: "Capabilities did not come in time",
      happened: "The camera was not reachable, or too slow: it has to give many answers.",
      first: "Test again; the values of the model list will do until then.",
      field: "address",
    },
    459: {
      heading: "Capabilities not kept",
      happened: "The camera's answer could not be written into the recorder's state folder.",
      first: "Ask the recorder's administrator: its log says why.",
      field: "none",
    },
    460: {
      heading: "No such service on camera",
      happened: "The camera has no service of this protocol, or no such channel, at this address and port.",
      first: "Switch the protocol on in the camera's settings, look for its port there, and check the channel.",
      field: "port",
    },
    461: {
      heading: "Camera refused the login",
      happened: "The camera rejected this user name and password when it was asked what it can do.",
      first: "Type the password again, once. Many cameras have users of their own for ONVIF.",
      field: "password",
    },
  },

  /** Codes of CamCapUserDefineReso. @type {Readonly<Record<number, Cause>>} */
  size: {
    457: {
      heading: "Size not measured",
      happened: "No picture came that could be measured.",
      first: "Test the camera first.",
      field: "path",
    },
  },

  /**
   * Causes that have no code of their own, by the names that the recorder gives.
   * @type {Readonly<Record<string, NamedCause>>}
   */
  named: {
    blocked: {
      heading: "Address not allowed",
      happened:
        "Nothing was sent: this recorder does not contact this address. It is the recorder's own machine, belongs " +
        "to a single link, or was closed by the administrator.",
      first: 'Compare the address. The administrator can open it under "addressPolicy" of the configuration.',
      field: "address",
      answered: false,
    },
    clockUnknown: {
      heading: "Camera refused the login, perhaps for its time",
      happened:
        "This camera's login holds the time, and the camera does not say what time it has. The password may be right.",
      first: "Set the camera's clock, or let it take the time from a time server.",
      field: "none",
      answered: true,
    },
    loginUnsupported: {
      heading: "Login method not supported",
      happened:
        "The camera asks for a login that the recorder does not know. It knows Basic, and Digest with MD5 or SHA-256.",
      first: "Switch the camera's login to Digest.",
      field: "none",
      answered: true,
    },
    certificateChanged: {
      heading: "Camera shows another certificate",
      happened:
        "Nothing was sent: what answers at this address has another TLS certificate than this stored camera had " +
        "before. It may be another device, or somebody in between.",
      first:
        "Find out whether the camera was reset or got a new certificate. If so, open it under Cameras, press Edit, and " +
        "tick “Take the camera's new certificate”.",
      field: "none",
      answered: false,
    },
    encryptedStream: {
      heading: "Stream is encrypted (SRTP)",
      happened: "The camera sends this stream only encrypted (SRTP), which the recorder cannot read.",
      first:
        "Switch the stream's encryption (SRTP) off in the camera's settings, or give the path of a stream without it.",
      field: "path",
      answered: true,
    },
    transportRefused: {
      heading: "No video comes this way",
      happened:
        "The camera refuses to send its video over the RTSP connection (TCP), and over UDP it refuses, too, or " +
        "nothing of it came from the camera itself.",
      first:
        "Switch RTP over RTSP (TCP) on in the camera's settings, or let UDP from the camera through the firewall. " +
        "If it can only send by multicast, use its picture over HTTP.",
      field: "none",
      answered: true,
    },
    notThisProtocol: {
      heading: "Another protocol on this port",
      happened: "What answers on this port is no RTSP server, or no web server.",
      first: "RTSP is mostly on port 554, HTTP on port 80.",
      field: "port",
      answered: true,
    },
    noService: {
      heading: "No ONVIF or PSIA on this port",
      happened: "Something answers on this port, but it does not have the service by which this camera is asked.",
      first:
        "Switch the service on in the camera's settings and look for its port there. Find, under Add, also takes a " +
        "camera without it.",
      field: "port",
      answered: true,
    },
    notUnderstood: {
      heading: "Answer not understood",
      happened:
        "The camera's answer makes no sense, ended early, is too long, or is no picture; or cameras have sent more " +
        "than 128 MiB to one request, which the log says.",
      first: "Restart the camera. If it stays so, its firmware may be at fault.",
      field: "none",
      answered: true,
    },
    unknownModel: {
      heading: "Model not known",
      happened:
        'Nothing was sent: this recorder has no file for this vendor and model. It has none for "Any camera" either, ' +
        'so that one cannot be asked what it can do.',
      first: "Choose a model from the list.",
      field: "model",
      answered: false,
    },
    noPath: {
      heading: "Stream path missing",
      happened: "Nothing was sent: a camera of this model is asked by its stream path, and none was given.",
      first: "Fill in the path. A list of the API takes none: test this camera alone.",
      field: "path",
      answered: false,
    },
    foreignPath: {
      heading: "Path leads elsewhere",
      happened: "Nothing was sent: the stream path is a whole address, and not one of RTSP or HTTP at this host.",
      first: "Compare its host with the address, or give only what follows the host.",
      field: "path",
      answered: false,
    },
    disabled: {
      heading: "Camera is switched off here",
      happened: "Nothing was sent: the stored camera is disabled on this recorder.",
      first: "Open it under Cameras, and press “Switch on”.",
      field: "none",
      answered: false,
    },
    badRow: {
      heading: "Row not readable",
      happened: "Nothing was sent: the row of the list is no object, or one of its values has a wrong type.",
      first: "Compare the row with the description of the API.",
      field: "none",
      answered: false,
    },
    decoderFailed: {
      heading: "Picture not decoded",
      happened:
        "The recorder's decoder ended over what this camera sent, took too long over it, or lacked memory. Nothing " +
        "but this picture is lost.",
      first:
        "Restart the camera, or choose another codec. If it stays so, tell the recorder's administrator: the log " +
        "has how the decoder ended, and the camera may be hostile.",
      field: "none",
      answered: true,
    },
    recorderFailed: {
      heading: "Recorder failed",
      happened:
        "The recorder could not read its records, could not go on with the camera's answer, or could not write it " +
        "into its state folder.",
      first: "Ask the recorder's administrator: its log says why.",
      field: "none",
      answered: false,
    },
  },

  /** Of a code that this page does not know. @type {Cause} */
  unknown: {
    heading: "Something else went wrong",
    happened: "The recorder gave a code that this page does not know.",
    first: "Read the recorder's log.",
    field: "none",
  },
};
